#include "cli/textoutput.h"

#include "cli/messages.h"
#include "cli/traceoutput.h"

bool TextOutput::flush()
{
    if (failed_ || text_.empty())
        return !failed_;
    if (!file_.isOpen())
        openStandardOutput(&file_);
    const auto size = static_cast<qint64>(text_.size());
    failed_ = file_.write(text_.data(), size) != size;
    if (failed_)
        tell(QStringLiteral("standard output cannot be written: ") + file_.errorString());
    text_.clear();
    return !failed_;
}
