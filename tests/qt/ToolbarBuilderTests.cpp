// Toolbars and segmented controls built from toolbar item identifiers: catalogue labels, the icon
// theme's icons where it has them, host-made items, the far-end space, and the identifier of what
// the user chose.
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <vector>

#include "quoddle/qt/ToolbarBuilder.h"
#include "quoddle/runtime/Localize.h"

using quod::SegmentedControl;
using quod::ToolbarBuilder;
using quod::ToolbarItem;
using quod::ToolbarItemIdentifier;

namespace {

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

// The texts of a bar's buttons and the object names of its other widgets, in order.
QStringList itemsOf(QToolBar& bar) {
    QStringList items;
    for (QAction* action : bar.actions()) {
        if (QWidget* widget = bar.widgetForAction(action);
            widget && !qobject_cast<QToolButton*>(widget)) {
            items << widget->objectName();
        } else {
            items << action->text();
        }
    }
    return items;
}

}  // namespace

class ToolbarBuilderTests : public QObject {
    Q_OBJECT

  private Q_SLOTS:
    void aToolbarShowsTheCatalogueAndHostItemsAndReportsTheChosenOne() {
        std::vector<ToolbarItemIdentifier> chosen;
        const ToolbarItemIdentifier search("SearchToolbarItem");
        const ToolbarBuilder builder(
            [&chosen](const ToolbarItemIdentifier& item) { chosen.push_back(item); },
            [&search](const ToolbarItemIdentifier& item) -> QWidget* {
                if (item != search) return nullptr;
                auto* field = new QLineEdit;
                field->setObjectName("search");
                return field;
            });
        const ToolbarItemIdentifier items[] = {
            ToolbarItemIdentifier::open(),        ToolbarItemIdentifier::backForward(),
            ToolbarItemIdentifier::remove(),      ToolbarItemIdentifier("NobodyMakesThis"),
            ToolbarItemIdentifier::centerSpace(), search,
            ToolbarItemIdentifier::save(),
        };
        QMainWindow window;
        QToolBar* bar = builder.makeToolbar(items, &window);
        window.addToolBar(bar);
        window.resize(900, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        // The unknown identifier is left out; remove shares insert's value and label.
        QCOMPARE(itemsOf(*bar),
                 QStringList({text(quod::Localize::open()), text(quod::Localize::back()),
                              text(quod::Localize::forward()), text(quod::Localize::insert()),
                              "CenterSpaceToolbarItem", "search", text(quod::Localize::save())}));
        // The user cannot hide the bar through the window's context menu.
        QVERIFY(!bar->toggleViewAction()->isVisible());

        // The space pushes what follows it to the far end of the bar.
        QWidget* open = bar->widgetForAction(bar->actions().front());
        QWidget* save = bar->widgetForAction(bar->actions().back());
        QVERIFY(open->geometry().left() < 20);
        QVERIFY2(save->geometry().right() > bar->width() - 20,
                 qPrintable(QString::number(save->geometry().right())));

        QTest::mouseClick(save, Qt::LeftButton);
        QTest::mouseClick(bar->widgetForAction(bar->actions().at(2)), Qt::LeftButton);
        QCOMPARE(chosen,
                 (std::vector{ToolbarItemIdentifier::save(), ToolbarItemIdentifier::forward()}));
    }

    void iconsComeFromTheDesktopThemeWhereItHasThem() {
        QTemporaryDir folder;
        const QDir theme(folder.filePath("quoddle-test"));
        QVERIFY(QDir().mkpath(theme.filePath("16x16/actions")));
        QFile index(theme.filePath("index.theme"));
        QVERIFY(index.open(QIODevice::WriteOnly));
        index.write(
            "[Icon Theme]\nName=quoddle-test\nDirectories=16x16/actions\n\n"
            "[16x16/actions]\nSize=16\nType=Fixed\n");
        index.close();
        QImage red(16, 16, QImage::Format_ARGB32);
        red.fill(Qt::red);
        QVERIFY(red.save(theme.filePath("16x16/actions/document-save.png")));
        const QStringList searchPaths = QIcon::themeSearchPaths();
        const QString themeName = QIcon::themeName();
        QIcon::setThemeSearchPaths({folder.path()});
        QIcon::setThemeName("quoddle-test");

        const auto saveItem = ToolbarBuilder::standardItem(ToolbarItemIdentifier::save());
        QVERIFY(saveItem.has_value());
        QCOMPARE(saveItem->label, text(quod::Localize::save()));
        QCOMPARE(saveItem->image.pixmap(16, 16).toImage().pixelColor(8, 8), QColor(Qt::red));
        // The theme has no icon for Add: the label alone.
        const auto addItem = ToolbarBuilder::standardItem(ToolbarItemIdentifier::add());
        QVERIFY(addItem.has_value());
        QVERIFY(addItem->image.isNull());
        // No single button stands for these.
        QVERIFY(!ToolbarBuilder::standardItem(ToolbarItemIdentifier::centerSpace()));
        QVERIFY(!ToolbarBuilder::standardItem(ToolbarItemIdentifier::backForward()));
        QVERIFY(!ToolbarBuilder::standardItem(ToolbarItemIdentifier("HostOnly")));

        QIcon::setThemeSearchPaths(searchPaths);
        QIcon::setThemeName(themeName);
    }

    void aSegmentedControlReportsTheSegmentTheUserChose() {
        std::vector<ToolbarItemIdentifier> chosen;
        const ToolbarBuilder builder(
            [&chosen](const ToolbarItemIdentifier& item) { chosen.push_back(item); });
        SegmentedControl* control = builder.makeSegmentedControl(
            {ToolbarItem{ToolbarItemIdentifier("Left"), "Left", {}},
             *ToolbarBuilder::standardItem(ToolbarItemIdentifier::run())});
        QCOMPARE(control->segmentCount(), 2);
        QCOMPARE(control->labelForSegment(1), text(quod::Localize::run()));
        QCOMPARE(control->selectedSegment(), -1);
        control->show();
        QVERIFY(QTest::qWaitForWindowExposed(control));

        QTest::mouseClick(control->findChildren<QToolButton*>().at(1), Qt::LeftButton);
        QCOMPARE(control->selectedSegment(), 1);
        // Selecting from code is no choice of the user's.
        control->setSelectedSegment(0);
        QCOMPARE(chosen, std::vector{ToolbarItemIdentifier::run()});
        delete control;
    }
};

QTEST_MAIN(ToolbarBuilderTests)
#include "ToolbarBuilderTests.moc"
