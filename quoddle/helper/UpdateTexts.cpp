#include "quoddle/helper/UpdateTexts.h"

#include "quoddle/runtime/Localize.h"

namespace quod::UpdateTexts {

std::string checkForUpdates() {
    return Localize::string("Check for Updates…");
}

std::string updatesAvailable() {
    return Localize::updatesAvailable();
}

std::string newVersionAvailable(std::string_view application, std::string_view version,
                                std::string_view currentVersion) {
    return Localize::format("%@ %@ is available. You have %@.",
                            {application, version, currentVersion});
}

std::string download() {
    return Localize::download();
}

std::string remindMe() {
    return Localize::remindMe();
}

std::string skip() {
    return Localize::skip();
}

std::string downloading() {
    return Localize::downloading();
}

std::string readyToInstall() {
    return Localize::readyToInstall();
}

std::string relaunch() {
    return Localize::relaunch();
}

std::string noUpdatesAvailable() {
    return Localize::noUpdatesAvailable();
}

std::string upToDate(std::string_view application, std::string_view version) {
    return Localize::format("%@ %@ is the newest version available.", {application, version});
}

std::string retrievalFailed() {
    return Localize::anErrorOccurredInRetrievingUpdateInformation();
}

std::string couldNotUpdate() {
    return Localize::couldNotUpdate();
}

std::string updateCancelled() {
    return Localize::updateCancelled();
}

}  // namespace quod::UpdateTexts
