#include "HostCalls.h"

#include <stdlib.h>

#include <QTableWidget>
#include <array>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "quoddle/helper/ServiceIdentifier.h"
#include "quoddle/helper/UpdateTexts.h"
#include "quoddle/helper/XPCResult.h"
#include "quoddle/interface/Attributes.h"
#include "quoddle/interface/BidirectionalString.h"
#include "quoddle/interface/ColumnProtocol.h"
#include "quoddle/interface/ContentTypeIcon.h"
#include "quoddle/interface/QuickLook.h"
#include "quoddle/interface/ThumbnailGenerator.h"
#include "quoddle/interface/UserNotificationCenter.h"
#include "quoddle/qt/ColumnHeaders.h"
#include "quoddle/qt/FileIcon.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/runtime/Localize.h"
#include "quoddle/runtime/RunLoop.h"

namespace {

int failures = 0;

void expect(bool condition, const char* what) {
    if (!condition) {
        std::cerr << "host calls: " << what << '\n';
        ++failures;
    }
}

enum class FileColumn { name, kind };

struct FileColumns : quod::ColumnProtocol<FileColumns, FileColumn> {
    static constexpr std::array entries{
        quod::ColumnEntry<FileColumn>{FileColumn::name,
                                      &quod::UserInterfaceItemIdentifier::Column::name,
                                      &quod::Localize::name},
        quod::ColumnEntry<FileColumn>{FileColumn::kind,
                                      &quod::UserInterfaceItemIdentifier::Column::kind,
                                      &quod::Localize::kind}};
};

struct Delegate : quod::UserNotificationCenterDelegate {
    void didReceive(const quod::NotificationResponse&) override {}
};

}  // namespace

int hostCallFailures() {
    using namespace quod;

    // Column sets, and their headers on a table.
    QTableWidget table(0, 2);
    expect(prepareHeaders<FileColumns>(table), "prepareHeaders");
    expect(FileColumns::column(columnIdentifier(table, 1)) == FileColumn::kind,
           "column(from identifier)");
    expect(FileColumns::allCases().size() == 2 && FileColumns::section(FileColumn::kind) == 1 &&
               FileColumns::identifier(FileColumn::name).rawValue() == "Name" &&
               !FileColumns::title(FileColumn::kind).empty() && FileColumns::headers().size() == 2,
           "the column set's questions");

    // Attribute sets and their Qt formats.
    const Attributes numbers = Attributes::lineNumbers();
    expect(numbers.font.has_value() && Attributes::statusLine().font.has_value() &&
               Attributes::result().backgroundColor.has_value(),
           "the attribute sets");
    expect(toQTextCharFormat(numbers).foreground().color().isValid() &&
               toQTextBlockFormat(*numbers.paragraphStyle).alignment() ==
                   toQtAlignment(TextAlignment::right),
           "attributes as Qt formats");

    // Joining, icons, thumbnails.
    expect(Interface::bidirectionalString({"a", "b"}, "/") ==
               "\u2066\u2068a\u2069/\u2068b\u2069\u2069",
           "bidirectionalString");
    const Url here = Url::fileURL("/proc/self/exe");
    expect(!Interface::iconNames(here).empty(), "iconNames");
    expect(!Interface::icon(Url::fileURL("/"), 16).isNull(), "icon(for url, size)");
    expect(!Interface::quickLookImageURL(here, 128, 128).has_value(),
           "quickLookImageURL answers no thumbnail of a program");
    const std::shared_ptr<const ThumbnailGenerator> generator = ThumbnailGenerator::installed();
    ThumbnailGenerator::install(generator);

    // Notifications, sent to a bus that is not there so that no desktop shows them.
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/quoddle-host-calls", 1);
    const auto delegate = std::make_shared<Delegate>();
    UserNotificationCenter& center = UserNotificationCenter::current();
    center.setNotificationCategories({{"Category", {{"action", "Action"}}}});
    center.setDelegate(delegate);
    std::optional<bool> delivered;
    Interface::notification("Title", "Text", "identifier", "Category", "Subtitle",
                            [&](bool result) { delivered = result; });
    center.add("other", {"Title", "", "Text", ""});
    RunLoop::main().runUntil([&] { return delivered.has_value(); }, std::chrono::seconds(20));
    expect(delivered == false && center.notificationCategories().size() == 1 &&
               NotificationResponse::defaultActionIdentifier == "default",
           "notification without a bus");

    // Helper tools, the outcomes of calls to them, the update texts.
    const ServiceIdentifier& helper = ServiceIdentifier::Helper::tessiva();
    expect(helper.objectPath() == "/com/fernholt/Tessiva/Helper" &&
               helper.interfaceName() == helper.rawValue() && helper.bus() == BusType::system &&
               ServiceIdentifier::pebblin().bus() == BusType::session &&
               ServiceIdentifier::entries().size() == 5,
           "ServiceIdentifier");
    expect(xpcResult(rawValue(XPCResult::timedOut)) == XPCResult::timedOut &&
               xpcResultForDBusError("org.freedesktop.DBus.Error.NoReply") == XPCResult::timedOut &&
               !localizedDescription(XPCResult::failed).empty(),
           "XPCResult");
    expect(!UpdateTexts::checkForUpdates().empty() && !UpdateTexts::updatesAvailable().empty() &&
               !UpdateTexts::newVersionAvailable("App", "2", "1").empty() &&
               !UpdateTexts::download().empty() && !UpdateTexts::remindMe().empty() &&
               !UpdateTexts::skip().empty() && !UpdateTexts::downloading().empty() &&
               !UpdateTexts::readyToInstall().empty() && !UpdateTexts::relaunch().empty() &&
               !UpdateTexts::noUpdatesAvailable().empty() &&
               !UpdateTexts::upToDate("App", "2").empty() &&
               !UpdateTexts::retrievalFailed().empty() && !UpdateTexts::couldNotUpdate().empty() &&
               !UpdateTexts::updateCancelled().empty(),
           "UpdateTexts");
    return failures;
}
