// The helper tools' and services' names, the outcomes of calls to them and the update texts.
#include <gio/gio.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <clocale>
#include <set>
#include <string>

#include "quoddle/helper/ServiceIdentifier.h"
#include "quoddle/helper/UpdateTexts.h"
#include "quoddle/helper/XPCResult.h"
#include "quoddle/runtime/Localize.h"

namespace quod {
namespace {

// The process's message language while it lives, as gettext reads it.
class MessageLanguage {
  public:
    explicit MessageLanguage(const char* language) {
        ::setenv("LANGUAGE", language, 1);
        std::setlocale(LC_ALL, "C.UTF-8");
    }
    ~MessageLanguage() {
        ::unsetenv("LANGUAGE");
        std::setlocale(LC_ALL, "C");
    }
    MessageLanguage(const MessageLanguage&) = delete;
    MessageLanguage& operator=(const MessageLanguage&) = delete;
};

constexpr XPCResult everyResult[] = {XPCResult::success,
                                     XPCResult::connectionFailed,
                                     XPCResult::helperNotInstalled,
                                     XPCResult::helperOutdated,
                                     XPCResult::authenticationFailed,
                                     XPCResult::notAuthorized,
                                     XPCResult::cancelled,
                                     XPCResult::timedOut,
                                     XPCResult::invalidRequest,
                                     XPCResult::failed,
                                     XPCResult::unknown};

// The outcomes whose sentences are not in the framework's catalogue of phrases.
constexpr XPCResult ownSentences[] = {XPCResult::helperNotInstalled,
                                      XPCResult::helperOutdated,
                                      XPCResult::notAuthorized,
                                      XPCResult::cancelled,
                                      XPCResult::timedOut,
                                      XPCResult::invalidRequest,
                                      XPCResult::failed};

TEST(ServiceIdentifier, EveryNameIsAWellKnownBusNameWithItsInterfaceAndObjectPath) {
    std::set<std::string> names;
    for (const auto& entry : ServiceIdentifier::entries()) {
        const ServiceIdentifier& service = entry.value();
        SCOPED_TRACE(entry.member);
        EXPECT_TRUE(g_dbus_is_name(service.rawValue().c_str()));
        EXPECT_FALSE(g_dbus_is_unique_name(service.rawValue().c_str()));
        EXPECT_TRUE(g_dbus_is_interface_name(service.interfaceName().c_str()));
        EXPECT_TRUE(g_variant_is_object_path(service.objectPath().c_str()));
        EXPECT_EQ(service.bus(), std::string_view(entry.member).starts_with("Helper::")
                                     ? BusType::system
                                     : BusType::session);
        EXPECT_TRUE(names.insert(service.rawValue()).second) << "twice: " << service.rawValue();
    }
    EXPECT_EQ(names.size(), 5u);
    EXPECT_EQ(ServiceIdentifier::Helper::tessiva().rawValue(), "com.fernholt.Tessiva.Helper");
    EXPECT_EQ(ServiceIdentifier::Helper::tessiva().objectPath(), "/com/fernholt/Tessiva/Helper");
    EXPECT_EQ(&ServiceIdentifier::quillmere(), &ServiceIdentifier::quillmere());
}

TEST(XPCResult, RawValuesAreFixedAndOnlyTheirOwnNumbersMakeAResult) {
    for (const XPCResult result : everyResult)
        EXPECT_EQ(xpcResult(rawValue(result)), result);
    EXPECT_EQ(rawValue(XPCResult::success), 0);
    EXPECT_EQ(rawValue(XPCResult::helperOutdated), 3);
    EXPECT_EQ(rawValue(XPCResult::unknown), 10);
    EXPECT_EQ(xpcResult(-1), std::nullopt);
    EXPECT_EQ(xpcResult(11), std::nullopt);
}

TEST(XPCResult, DBusErrorsReadAsWhatWentWrongForTheUser) {
    const std::pair<const char*, XPCResult> readings[] = {
        {"org.freedesktop.DBus.Error.ServiceUnknown", XPCResult::helperNotInstalled},
        {"org.freedesktop.DBus.Error.Spawn.ExecFailed", XPCResult::helperNotInstalled},
        {"org.freedesktop.DBus.Error.UnknownMethod", XPCResult::helperOutdated},
        {"org.freedesktop.DBus.Error.Disconnected", XPCResult::connectionFailed},
        {"org.freedesktop.DBus.Error.NoReply", XPCResult::timedOut},
        {"org.freedesktop.DBus.Error.AccessDenied", XPCResult::notAuthorized},
        {"org.freedesktop.PolicyKit1.Error.NotAuthorized", XPCResult::notAuthorized},
        {"org.freedesktop.PolicyKit1.Error.Cancelled", XPCResult::cancelled},
        {"org.freedesktop.DBus.Error.InteractiveAuthorizationRequired",
         XPCResult::authenticationFailed},
        {"org.freedesktop.DBus.Error.InvalidArgs", XPCResult::invalidRequest},
        {"org.freedesktop.DBus.Error.Failed", XPCResult::failed},
        {"com.fernholt.Tessiva.Helper.Error.JobLocked", XPCResult::failed},
        {"org.freedesktop.DBus.Error.SomethingNew", XPCResult::unknown},
        {"org.freedesktop.DBus.Error.", XPCResult::unknown},
        {"org.freedesktop.DBus.Error.unknownmethod", XPCResult::unknown},
        {"", XPCResult::unknown},
    };
    for (const auto& [name, result] : readings)
        EXPECT_EQ(xpcResultForDBusError(name), result) << name;
}

TEST(XPCResult, EveryOutcomeHasASentenceOfItsOwn) {
    std::set<std::string> sentences;
    for (const XPCResult result : everyResult)
        sentences.insert(localizedDescription(result));
    EXPECT_EQ(sentences.size(), std::size(everyResult));
    EXPECT_EQ(localizedDescription(XPCResult::success), Localize::noError());
    EXPECT_EQ(localizedDescription(XPCResult::connectionFailed),
              Localize::couldNotEstablishCommunicationWithHelperTool());
    EXPECT_EQ(localizedDescription(XPCResult::helperNotInstalled),
              "The helper tool is not installed.");
    EXPECT_EQ(localizedDescription(XPCResult::unknown), Localize::anUnknownErrorOccurred());
}

TEST(UpdateTexts, FillInTheApplicationAndItsVersions) {
    EXPECT_EQ(UpdateTexts::newVersionAvailable("Quillmere", "2.1", "2.0"),
              "Quillmere 2.1 is available. You have 2.0.");
    EXPECT_EQ(UpdateTexts::upToDate("Quillmere", "2.0"),
              "Quillmere 2.0 is the newest version available.");
    EXPECT_EQ(UpdateTexts::checkForUpdates(), "Check for Updates…");
    EXPECT_EQ(UpdateTexts::skip(), Localize::skip());
}

TEST(Translations, TheNewSentencesHaveTheirGermanText) {
    std::vector<std::string> english;
    for (const XPCResult result : ownSentences)
        english.push_back(localizedDescription(result));
    const std::string englishMenuItem = UpdateTexts::checkForUpdates();

    const MessageLanguage german("de");
    for (std::size_t index = 0; index < std::size(ownSentences); ++index)
        EXPECT_NE(localizedDescription(ownSentences[index]), english[index]);
    EXPECT_NE(UpdateTexts::checkForUpdates(), englishMenuItem);
    EXPECT_EQ(localizedDescription(XPCResult::helperNotInstalled),
              "Das Hilfsprogramm ist nicht installiert.");
    EXPECT_EQ(UpdateTexts::newVersionAvailable("Quillmere", "2.1", "2.0"),
              "Quillmere 2.1 ist verfügbar. Sie haben 2.0.");
    EXPECT_EQ(UpdateTexts::upToDate("Quillmere", "2.0"),
              "Quillmere 2.0 ist die neueste verfügbare Version.");
}

}  // namespace
}  // namespace quod
