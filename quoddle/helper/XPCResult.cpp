#include "quoddle/helper/XPCResult.h"

#include <algorithm>
#include <array>

#include "quoddle/runtime/Localize.h"

namespace quod {
namespace {

constexpr std::string_view busErrors = "org.freedesktop.DBus.Error.";
constexpr std::string_view authorityErrors = "org.freedesktop.PolicyKit1.Error.";

struct Reading {
    std::string_view name;
    XPCResult result;
};

constexpr std::array busReadings{
    Reading{"ServiceUnknown", XPCResult::helperNotInstalled},
    Reading{"NameHasNoOwner", XPCResult::helperNotInstalled},
    Reading{"UnknownMethod", XPCResult::helperOutdated},
    Reading{"UnknownInterface", XPCResult::helperOutdated},
    Reading{"UnknownObject", XPCResult::helperOutdated},
    Reading{"UnknownProperty", XPCResult::helperOutdated},
    Reading{"NoServer", XPCResult::connectionFailed},
    Reading{"Disconnected", XPCResult::connectionFailed},
    Reading{"NoNetwork", XPCResult::connectionFailed},
    Reading{"BadAddress", XPCResult::connectionFailed},
    Reading{"FileNotFound", XPCResult::connectionFailed},
    Reading{"LimitsExceeded", XPCResult::connectionFailed},
    Reading{"NoReply", XPCResult::timedOut},
    Reading{"Timeout", XPCResult::timedOut},
    Reading{"TimedOut", XPCResult::timedOut},
    Reading{"AuthFailed", XPCResult::authenticationFailed},
    Reading{"InteractiveAuthorizationRequired", XPCResult::authenticationFailed},
    Reading{"AccessDenied", XPCResult::notAuthorized},
    Reading{"InvalidArgs", XPCResult::invalidRequest},
    Reading{"InvalidSignature", XPCResult::invalidRequest},
    Reading{"Failed", XPCResult::failed},
};

}  // namespace

int rawValue(XPCResult result) {
    return static_cast<int>(result);
}

std::optional<XPCResult> xpcResult(int rawValue) {
    if (rawValue < 0 || rawValue > static_cast<int>(XPCResult::unknown)) return std::nullopt;
    return static_cast<XPCResult>(rawValue);
}

XPCResult xpcResultForDBusError(std::string_view errorName) {
    if (errorName.starts_with(busErrors)) {
        const std::string_view word = errorName.substr(busErrors.size());
        // Activation failures: "Spawn.ServiceNotFound", "Spawn.ExecFailed", ...
        if (word.starts_with("Spawn.")) return XPCResult::helperNotInstalled;
        const auto reading = std::ranges::find(busReadings, word, &Reading::name);
        return reading != busReadings.end() ? reading->result : XPCResult::unknown;
    }
    if (errorName == std::string(authorityErrors) + "NotAuthorized")
        return XPCResult::notAuthorized;
    if (errorName == std::string(authorityErrors) + "Cancelled") return XPCResult::cancelled;
    if (errorName.empty() || errorName.starts_with(authorityErrors)) return XPCResult::unknown;
    return XPCResult::failed;
}

std::string localizedDescription(XPCResult result) {
    switch (result) {
        case XPCResult::success:
            return Localize::noError();
        case XPCResult::connectionFailed:
            return Localize::couldNotEstablishCommunicationWithHelperTool();
        case XPCResult::helperNotInstalled:
            return Localize::string("The helper tool is not installed.");
        case XPCResult::helperOutdated:
            return Localize::string("The helper tool needs to be updated.");
        case XPCResult::authenticationFailed:
            return Localize::cannotAuthenticate();
        case XPCResult::notAuthorized:
            return Localize::string("You are not allowed to do this.");
        case XPCResult::cancelled:
            return Localize::string("The operation was cancelled.");
        case XPCResult::timedOut:
            return Localize::string("The helper tool did not answer in time.");
        case XPCResult::invalidRequest:
            return Localize::string("The helper tool did not understand the request.");
        case XPCResult::failed:
            return Localize::string("The helper tool could not complete the operation.");
        case XPCResult::unknown:
            break;
    }
    return Localize::anUnknownErrorOccurred();
}

}  // namespace quod
