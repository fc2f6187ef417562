// The outcome of a call to a helper tool or inter-process service (ServiceIdentifier.h), and the
// sentence that tells the user about it.
//
// A helper answers a call with the raw value of one of these cases (an int32 in its reply); a
// call that fails on the way gets its case from the D-Bus error it ended with. Raw values are
// part of the protocol between an application and its helpers, which are updated separately, so
// they never change; new cases get new numbers.
//
//   case                  raw  description (English; translated like every interface text)
//   success               0    "No Error"
//   connectionFailed      1    "Could not establish communication with helper tool."
//   helperNotInstalled    2    "The helper tool is not installed."
//   helperOutdated        3    "The helper tool needs to be updated."
//   authenticationFailed  4    "Cannot authenticate."
//   notAuthorized         5    "You are not allowed to do this."
//   cancelled             6    "The operation was cancelled."
//   timedOut              7    "The helper tool did not answer in time."
//   invalidRequest        8    "The helper tool did not understand the request."
//   failed                9    "The helper tool could not complete the operation."
//   unknown               10   "An unknown error occurred."
//
// `xpcResult(rawValue)` makes a case only from one of its numbers. `xpcResultForDBusError(name)`
// reads a D-Bus error name as the user would want it explained:
//   - the service has no owner and none could be started (ServiceUnknown, NameHasNoOwner,
//     Spawn.*): helperNotInstalled;
//   - the helper lacks the method, interface or object asked for (UnknownMethod,
//     UnknownInterface, UnknownObject, UnknownProperty): helperOutdated;
//   - no bus to talk over (NoServer, Disconnected, NoNetwork, BadAddress, FileNotFound,
//     LimitsExceeded): connectionFailed;
//   - NoReply, Timeout, TimedOut: timedOut;
//   - AuthFailed, InteractiveAuthorizationRequired: authenticationFailed; AccessDenied and
//     polkit's NotAuthorized: notAuthorized; polkit's Cancelled: cancelled;
//   - InvalidArgs, InvalidSignature: invalidRequest;
//   - Failed, and any error name outside the bus's and polkit's own (a helper's errors):
//     failed;
//   - any other error of the bus's or polkit's namespace, and the empty name: unknown.
// (The bus's names are "org.freedesktop.DBus.Error." and the word; polkit's
// "org.freedesktop.PolicyKit1.Error.".)
//
//     localizedDescription(XPCResult::helperNotInstalled)   // "Das Hilfsprogramm ist nicht ..."
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

enum class XPCResult : int {
    success = 0,
    connectionFailed = 1,
    helperNotInstalled = 2,
    helperOutdated = 3,
    authenticationFailed = 4,
    notAuthorized = 5,
    cancelled = 6,
    timedOut = 7,
    invalidRequest = 8,
    failed = 9,
    unknown = 10,
};

[[nodiscard]] QUODDLE_EXPORT int rawValue(XPCResult result);
[[nodiscard]] QUODDLE_EXPORT std::optional<XPCResult> xpcResult(int rawValue);
[[nodiscard]] QUODDLE_EXPORT XPCResult xpcResultForDBusError(std::string_view errorName);
// In the user's language (Localize).
[[nodiscard]] QUODDLE_EXPORT std::string localizedDescription(XPCResult result);

}  // namespace quod
