#include "device/driver/socketcan/caninterfaces.h"

#include "device/driver/socketcan/descriptor.h"

#include <linux/can.h>
#include <linux/can/netlink.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>
#include <utility>

namespace
{

constexpr std::size_t kAnswerBytes = 32768; // the kernel fills at most so much at once
constexpr long kAnswerTimeoutSeconds = 1;

using Visit = std::function<void(const rtattr &attribute)>;

void forEachAttribute(const rtattr *first, std::size_t bytes, const Visit &visit)
{
    auto left = static_cast<int>(bytes);
    for (const rtattr *attribute = first; RTA_OK(attribute, left); attribute = RTA_NEXT(attribute, left))
        visit(*attribute);
}

void forEachNested(const rtattr &parent, const Visit &visit)
{
    forEachAttribute(static_cast<const rtattr *>(RTA_DATA(&parent)), RTA_PAYLOAD(&parent), visit);
}

int typeOf(const rtattr &attribute)
{
    return attribute.rta_type & NLA_TYPE_MASK;
}

template <typename Value> Value valueOf(const rtattr &attribute)
{
    Value value{};
    std::memcpy(&value, RTA_DATA(&attribute), std::min<std::size_t>(sizeof value, RTA_PAYLOAD(&attribute)));
    return value;
}

std::string textOf(const rtattr &attribute)
{
    const char *text = static_cast<const char *>(RTA_DATA(&attribute));
    return std::string(text, strnlen(text, RTA_PAYLOAD(&attribute)));
}

ControllerState controllerState(std::uint32_t kernelState)
{
    switch (kernelState) {
    case CAN_STATE_ERROR_ACTIVE:
        return ControllerState::ErrorActive;
    case CAN_STATE_ERROR_WARNING:
        return ControllerState::ErrorWarning;
    case CAN_STATE_ERROR_PASSIVE:
        return ControllerState::ErrorPassive;
    case CAN_STATE_BUS_OFF:
        return ControllerState::BusOff;
    default: // stopped, sleeping
        return ControllerState::Unknown;
    }
}

void readCounters(const can_berr_counter &counters, ChannelState *state)
{
    state->countersKnown = true;
    state->transmitErrors = counters.txerr;
    state->receiveErrors = counters.rxerr;
}

void readCanAttribute(const rtattr &attribute, CanInterface *interface)
{
    if (typeOf(attribute) == IFLA_CAN_BITTIMING)
        interface->bitRate = valueOf<can_bittiming>(attribute).bitrate;
    else if (typeOf(attribute) == IFLA_CAN_DATA_BITTIMING)
        interface->dataBitRate = valueOf<can_bittiming>(attribute).bitrate;
    else if (typeOf(attribute) == IFLA_CAN_STATE)
        interface->state.controller = controllerState(valueOf<std::uint32_t>(attribute));
    else if (typeOf(attribute) == IFLA_CAN_BERR_COUNTER)
        readCounters(valueOf<can_berr_counter>(attribute), &interface->state);
}

void readLinkInfo(const rtattr &linkInfo, CanInterface *interface)
{
    forEachNested(linkInfo, [interface](const rtattr &attribute) {
        if (typeOf(attribute) == IFLA_INFO_KIND)
            interface->driver = textOf(attribute);
        else if (typeOf(attribute) == IFLA_INFO_DATA && interface->driver == "can")
            forEachNested(attribute, [interface](const rtattr &inner) { readCanAttribute(inner, interface); });
    });
}

// Hardware says only "can" about its kind; its driver's name is where its device is.
std::string hardwareDriver(const std::string &name)
{
    char target[PATH_MAX];
    const std::string link = "/sys/class/net/" + name + "/device/driver";
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    if (length <= 0)
        return {};
    const std::string path(target, static_cast<std::size_t>(length));
    return path.substr(path.rfind('/') + 1);
}

CanInterface readInterface(const ifinfomsg &link, std::size_t bytes)
{
    CanInterface interface;
    interface.index = link.ifi_index;
    interface.up = (link.ifi_flags & IFF_UP) != 0;
    forEachAttribute(IFLA_RTA(&link), bytes, [&interface](const rtattr &attribute) {
        switch (typeOf(attribute)) {
        case IFLA_IFNAME:
            interface.name = textOf(attribute);
            break;
        case IFLA_MTU:
            interface.fd = valueOf<std::uint32_t>(attribute) >= CANFD_MTU;
            break;
        case IFLA_MAP:
            interface.irq = valueOf<rtnl_link_ifmap>(attribute).irq;
            break;
        case IFLA_LINKINFO:
            readLinkInfo(attribute, &interface);
            break;
        default:
            break;
        }
    });
    const std::string driver = hardwareDriver(interface.name);
    if (!driver.empty())
        interface.driver = driver;
    return interface;
}

bool askForLinks(int socket)
{
    struct {
        nlmsghdr header;
        ifinfomsg link;
    } request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = RTM_GETLINK;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.link.ifi_family = AF_UNSPEC;
    return send(socket, &request, sizeof request, 0) == static_cast<ssize_t>(sizeof request);
}

// false once there is no more to come.
bool readAnswer(const std::vector<char> &answer, std::size_t bytes, std::vector<CanInterface> *interfaces)
{
    auto left = static_cast<unsigned>(bytes);
    for (auto *header = reinterpret_cast<const nlmsghdr *>(answer.data()); NLMSG_OK(header, left);
         header = NLMSG_NEXT(header, left)) {
        if (header->nlmsg_type != RTM_NEWLINK)
            return false; // NLMSG_DONE or NLMSG_ERROR
        const auto *link = static_cast<const ifinfomsg *>(NLMSG_DATA(header));
        if (link->ifi_type == ARPHRD_CAN)
            interfaces->push_back(readInterface(*link, IFLA_PAYLOAD(header)));
    }
    return true;
}

} // namespace

std::vector<CanInterface> canInterfaces()
{
    std::vector<CanInterface> interfaces;
    const Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    const timeval timeout{kAnswerTimeoutSeconds, 0};
    if (!socket.valid() || setsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout) != 0 ||
        !askForLinks(socket.get()))
        return interfaces;
    std::vector<char> answer(kAnswerBytes);
    for (bool more = true; more;) {
        const ssize_t bytes = recv(socket.get(), answer.data(), answer.size(), 0);
        if (bytes < 0 && errno == EINTR)
            continue;
        more = bytes > 0 && readAnswer(answer, static_cast<std::size_t>(bytes), &interfaces);
    }
    std::sort(interfaces.begin(), interfaces.end(),
              [](const CanInterface &a, const CanInterface &b) { return a.index < b.index; });
    return interfaces;
}

bool findCanInterface(const std::string &name, CanInterface *found)
{
    for (CanInterface &interface : canInterfaces())
        if (interface.name == name) {
            *found = std::move(interface);
            return true;
        }
    return false;
}

std::string bitRateText(std::uint32_t bitsPerSecond)
{
    constexpr std::uint32_t kKilo = 1000;
    constexpr std::uint32_t kMega = 1000000;
    if (bitsPerSecond != 0 && bitsPerSecond % kMega == 0)
        return std::to_string(bitsPerSecond / kMega) + "M";
    if (bitsPerSecond != 0 && bitsPerSecond % kKilo == 0)
        return std::to_string(bitsPerSecond / kKilo) + "k";
    return std::to_string(bitsPerSecond);
}

std::string description(const CanInterface &interface)
{
    std::string text = interface.name;
    if (!interface.driver.empty())
        text += " " + interface.driver;
    if (interface.bitRate != 0)
        text += " " + bitRateText(interface.bitRate);
    if (interface.bitRate != 0 && interface.dataBitRate != 0)
        text += "/" + bitRateText(interface.dataBitRate);
    return text;
}
