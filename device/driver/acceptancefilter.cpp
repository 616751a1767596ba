#include "device/driver/acceptancefilter.h"

#include "device/driver/numbertext.h"

#include <algorithm>

namespace
{

bool isUnsigned(const std::string &text)
{
    std::uint32_t ignored = 0;
    return parseUnsigned(text, &ignored);
}

} // namespace

bool AcceptanceFilter::clear(const std::string &value)
{
    if (!isUnsigned(value))
        return false;
    programmed_.clear();
    step_ = Step::Idle;
    return true;
}

bool AcceptanceFilter::setMode(const std::string &value)
{
    std::uint32_t mode = 0;
    if (!parseUnsigned(value, &mode) || mode > 1)
        return false;
    begun_ = Range{mode == 1, 0, 0};
    step_ = Step::ModeGiven;
    return true;
}

bool AcceptanceFilter::setStart(const std::string &value)
{
    std::uint32_t first = 0;
    const std::uint32_t limit = begun_.extended ? kExtendedIdLimit : kStandardIdLimit;
    if (step_ == Step::Idle || !parseUnsigned(value, &first) || first >= limit)
        return false;
    begun_.first = first;
    step_ = Step::StartGiven;
    return true;
}

bool AcceptanceFilter::setEnd(const std::string &value)
{
    std::uint32_t last = 0;
    const std::uint32_t limit = begun_.extended ? kExtendedIdLimit : kStandardIdLimit;
    if (step_ != Step::StartGiven || !parseUnsigned(value, &last) || last >= limit || last < begun_.first)
        return false;
    begun_.last = last;
    programmed_.push_back(begun_);
    step_ = Step::Idle;
    return true;
}

bool AcceptanceFilter::acknowledge(const std::string &value)
{
    if (step_ != Step::Idle || !isUnsigned(value))
        return false;
    active_ = programmed_;
    return true;
}

bool AcceptanceFilter::passes(const BusFrame &frame) const
{
    return active_.empty() || std::any_of(active_.begin(), active_.end(), [&frame](const Range &range) {
               return range.extended == frame.extended() && frame.identifier() >= range.first &&
                      frame.identifier() <= range.last;
           });
}
