#include <QApplication>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QImage>
#include <QLabel>
#include <QMainWindow>
#include <QPainter>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTest>
#include <QToolBar>
#include <cstdlib>

#include "quoddle/interface/Accessibility.h"
#include "quoddle/interface/InterfaceLook.h"
#include "quoddle/preferences/UserDefaults.h"
#include "quoddle/qt/CountTableCellView.h"
#include "quoddle/qt/FixedToolbarPanel.h"
#include "quoddle/qt/GradientBackgroundView.h"
#include "quoddle/qt/GroupTableRowView.h"
#include "quoddle/qt/MenuItem.h"
#include "quoddle/qt/QtPlatform.h"
#include "quoddle/qt/ScopeBackgroundView.h"
#include "quoddle/qt/TabView.h"
#include "quoddle/qt/VerticallyCenteredTextFieldCell.h"
#include "quoddle/runtime/Localize.h"

using namespace quod;

namespace {

QPalette darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x30, 0x34, 0x38));
    palette.setColor(QPalette::WindowText, QColor(0xe0, 0xe0, 0xe0));
    palette.setColor(QPalette::Base, QColor(0x10, 0x12, 0x14));
    palette.setColor(QPalette::Text, QColor(0xd0, 0xd8, 0xe0));
    palette.setColor(QPalette::Dark, QColor(0x60, 0x20, 0x20));
    palette.setColor(QPalette::Mid, QColor(0x20, 0x60, 0x20));
    return palette;
}

// Each channel within `tolerance` of the expected one (gradients are dithered and interpolated).
bool near(QColor actual, QColor expected, int tolerance = 2) {
    return std::abs(actual.red() - expected.red()) <= tolerance &&
           std::abs(actual.green() - expected.green()) <= tolerance &&
           std::abs(actual.blue() - expected.blue()) <= tolerance;
}

QImage grabbed(QWidget& view, QSize size = {60, 40}) {
    view.resize(size);
    return view.grab().toImage();
}

// A widget that draws nothing of its own must not show its own palette: the views draw with the
// application's system colours.
void giveOwnWindowColour(QWidget& view) {
    QPalette own = view.palette();
    own.setColor(QPalette::Window, Qt::magenta);
    view.setPalette(own);
}

}  // namespace

class CustomViewTests : public QObject {
    Q_OBJECT

    QPalette light_;
    std::shared_ptr<UserDefaults> store_;

    // Runs `check` once under the light application palette and once under a dark one.
    template <typename Check>
    void inLightAndDark(Check check) {
        QApplication::setPalette(light_);
        check(light_);
        const QPalette dark = darkPalette();
        QApplication::setPalette(dark);
        check(dark);
        QApplication::setPalette(light_);
    }

  private Q_SLOTS:
    void initTestCase() {
        light_ = QApplication::palette();
        QVERIFY(light_.color(QPalette::Window).lightnessF() >= 0.5);
        QtPlatform::install();
    }
    void init() {
        store_ = UserDefaults::inMemory();
        UserDefaults::setStandard(store_);
    }
    void cleanup() {
        QApplication::setPalette(light_);
        Interface::setLook(InterfaceLook::flat);
    }

    void gradientShadesDownwardOnlyOnTheClassicLook() {
        inLightAndDark([](const QPalette& palette) {
            const QColor window = palette.color(QPalette::Window);
            GradientBackgroundView view;
            Interface::setLook(InterfaceLook::classic);
            QImage image = grabbed(view);
            const QColor top = image.pixelColor(30, 0);
            const QColor bottom = image.pixelColor(30, 39);
            QVERIFY(near(top, window));
            QVERIFY(bottom.lightness() < top.lightness());
            QVERIFY(near(bottom,
                         QColor::fromRgbF(window.redF() * 0.88, window.greenF() * 0.88,
                                          window.blueF() * 0.88),
                         3));

            Interface::setLook(InterfaceLook::flat);
            image = grabbed(view);
            QCOMPARE(image.pixelColor(30, 0), image.pixelColor(30, 39));
            QCOMPARE(image.pixelColor(30, 0), window);
        });
        GradientBackgroundView view;
        QCOMPARE(view.accessibleName(), QString::fromStdString(Localize::tab()));
    }

    void scopeBackgroundRulesEachEdgeOnePixelWide() {
        inLightAndDark([](const QPalette& palette) {
            for (const InterfaceLook look : {InterfaceLook::flat, InterfaceLook::classic}) {
                Interface::setLook(look);
                const QColor stroke =
                    palette.color(look == InterfaceLook::flat ? QPalette::Dark : QPalette::Mid);
                ScopeBackgroundView view;
                const QImage image = grabbed(view);
                for (const QPoint edge :
                     {QPoint(0, 20), QPoint(59, 20), QPoint(30, 0), QPoint(30, 39)}) {
                    QCOMPARE(image.pixelColor(edge).rgba(), stroke.rgba());
                }
                QCOMPARE(image.pixelColor(1, 20).rgba(), palette.color(QPalette::Window).rgba());
                QCOMPARE(image.pixelColor(30, 20).rgba(), palette.color(QPalette::Window).rgba());
            }
        });
        ScopeBackgroundView view;
        QCOMPARE(view.accessibleName(), QString::fromStdString(Localize::noItems()));
    }

    void tabViewFillsWithTheWindowColour() {
        inLightAndDark([](const QPalette& palette) {
            TabView view;
            giveOwnWindowColour(view);
            const QImage image = grabbed(view);
            QCOMPARE(image.pixelColor(0, 0), palette.color(QPalette::Window));
            QCOMPARE(image.pixelColor(59, 39), palette.color(QPalette::Window));
        });
    }

    void groupRowIsALightTranslucentTint() {
        inLightAndDark([](const QPalette& palette) {
            const QColor under = palette.color(QPalette::Mid);
            const bool dark = palette.color(QPalette::Window).lightnessF() < 0.5;
            const double level = dark ? 0.2 : 0.7;
            const QColor color = GroupTableRowView::color();
            QVERIFY(near(color,
                         QColor::fromRgbF(under.redF() + (1 - under.redF()) * level,
                                          under.greenF() + (1 - under.greenF()) * level,
                                          under.blueF() + (1 - under.blueF()) * level),
                         1));
            QCOMPARE(color.alpha(), qRound(0.52 * 255));
        });
        store_->setBool(Interface::reduceTransparencyKey, true);
        QCOMPARE(GroupTableRowView::color().alpha(), 255);
        GroupTableRowView view;
        QCOMPARE(view.accessibleName(), QString::fromStdString(Localize::group()));
    }

    void groupRowBackgroundUsesThePaintersCompositionMode() {
        const QColor color = GroupTableRowView::color();
        QImage image(10, 10, QImage::Format_ARGB32);
        image.fill(Qt::blue);
        {
            QPainter painter(&image);
            GroupTableRowView::drawBackground(painter, QRect(0, 0, 5, 10));
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            GroupTableRowView::drawBackground(painter, QRect(5, 0, 5, 10));
        }
        // Blended over the blue, then replacing it.
        QVERIFY(image.pixelColor(2, 5).blue() > color.blue());
        QCOMPARE(image.pixelColor(2, 5).alpha(), 255);
        QVERIFY(near(image.pixelColor(7, 5), color, 1));
        QCOMPARE(image.pixelColor(7, 5).alpha(), color.alpha());
    }

    void countBadgeShowsNonZeroCounts() {
        CountTableCellView cell;
        QPushButton* badge = cell.countButton();
        QVERIFY(badge != nullptr);
        QCOMPARE(badge->accessibleName(), QString::fromStdString(Localize::count()));
        QCOMPARE(badge->toolTip(), QString::fromStdString(Localize::count()));
        QVERIFY(badge->isHidden());

        cell.updateCount(12);
        QVERIFY(!badge->isHidden());
        QCOMPARE(badge->text(), QStringLiteral("12"));
        cell.updateCount(0);
        QVERIFY(badge->isHidden());

        CountTableCellView plain(CountTableCellView::Badge::none);
        QVERIFY(plain.countButton() == nullptr);
        plain.updateCount(3);  // nothing to show it on
        QVERIFY(plain.textField() != nullptr);
    }

    void centredTextCellCentresAndOverflowsEvenly() {
        VerticallyCenteredTextFieldCell cell;
        QStyleOptionViewItem option;
        option.font.setPixelSize(30);
        option.text = QStringLiteral("H");
        const double natural = QFontMetricsF(option.font).height();

        const QRectF roomy = cell.titleRect(QRectF(5, 0, 100, 100), option);
        QCOMPARE(roomy, QRectF(5, (100 - natural) / 2, 100, natural));
        const QRectF tight = cell.titleRect(QRectF(5, 40, 100, 10), option);
        QVERIFY(tight.top() < 40);
        QCOMPARE(tight.center().y(), 45.0);
        // A second line adds one line spacing.
        option.text = QStringLiteral("H\nH");
        const QRectF twoLines = cell.titleRect(QRectF(5, 0, 100, 100), option);
        QCOMPARE(twoLines.height(), natural + QFontMetricsF(option.font).lineSpacing());

        // Painted: the ink of a tall text straddles a thin row instead of hanging below its top.
        QStandardItemModel model;
        model.appendRow(new QStandardItem(QStringLiteral("H")));
        QImage image(200, 100, QImage::Format_ARGB32);
        image.fill(Qt::white);
        option = QStyleOptionViewItem();
        option.font.setPixelSize(30);
        option.rect = QRect(0, 40, 200, 10);
        option.palette.setColor(QPalette::Text, Qt::black);
        option.state = QStyle::State_Enabled | QStyle::State_Active;
        {
            QPainter painter(&image);
            cell.paint(&painter, option, model.index(0, 0));
        }
        int firstInk = -1;
        int lastInk = -1;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y).lightness() < 128) {
                    if (firstInk < 0) firstInk = y;
                    lastInk = y;
                    break;
                }
            }
        }
        QVERIFY(firstInk >= 0);
        QVERIFY(firstInk < 40);
        QVERIFY(lastInk >= 50);
    }

    void fixedToolbarPanelKeepsItsToolbar() {
        FixedToolbarPanel panel;
        QVERIFY(panel.windowFlags().testFlag(Qt::Tool));
        QToolBar* toolbar = panel.toolbar();
        QVERIFY(!toolbar->isMovable());
        QVERIFY(!toolbar->isFloatable());
        QVERIFY(!toolbar->toggleViewAction()->isVisible());
        QVERIFY(!toolbar->toggleViewAction()->isEnabled());

        const struct {
            MenuItem item;
            bool valid;
        } cases[] = {
            {{QStringLiteral("None"), std::string(), QString()}, false},
            {{QStringLiteral("Hide"), std::string("toggleToolbarShown"), QString()}, false},
            {{QStringLiteral("Customise"), std::string("runToolbarCustomizationPalette"),
              QString()},
             false},
            {{QStringLiteral("Copy"), std::string("copy"), QStringLiteral("Ctrl+C")}, true},
            {{QStringLiteral("Run"), [] {}, QString()}, true},
        };
        for (const auto& c : cases) {
            QCOMPARE(panel.validateMenuItem(c.item), c.valid);
        }

        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        panel.toggleToolbarShown();
        panel.runToolbarCustomizationPalette();
        QVERIFY(toolbar->isVisible());

        // No context menu offers to switch the toolbar off, where an ordinary window has one.
        QMainWindow ordinary;
        ordinary.addToolBar(QStringLiteral("Tools"));
        ordinary.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ordinary));
        QVERIFY(popupAfterContextMenu(ordinary.findChild<QToolBar*>()));
        QVERIFY(!popupAfterContextMenu(toolbar));
        QVERIFY(!popupAfterContextMenu(&panel));
    }

    void menuItemsRunTheirClosureOrCarryTheirAction() {
        int runs = 0;
        MenuItem closureItem(
            QStringLiteral("Reload"), [&runs] { ++runs; }, QStringLiteral("Ctrl+R"));
        QCOMPARE(closureItem.action(), std::string("performAction"));
        QCOMPARE(closureItem.shortcut(), QKeySequence(Qt::CTRL | Qt::Key_R));
        QCOMPARE(closureItem.text(), QStringLiteral("Reload"));
        closureItem.trigger();
        closureItem.trigger();
        QCOMPARE(runs, 2);

        MenuItem named(QStringLiteral("Copy"), std::string("copy"), QString());
        QCOMPARE(named.action(), std::string("copy"));
        QVERIFY(named.shortcut().isEmpty());
        named.trigger();  // the host dispatches named actions; nothing runs here
    }

  private:
    // Whether a right click on `widget` opens a popup menu (closed again before returning).
    static bool popupAfterContextMenu(QWidget* widget) {
        const QPoint inside(widget->width() / 2, widget->height() / 2);
        QContextMenuEvent event(QContextMenuEvent::Mouse, inside, widget->mapToGlobal(inside));
        QApplication::sendEvent(widget, &event);
        QWidget* popup = QApplication::activePopupWidget();
        if (popup != nullptr) popup->close();
        return popup != nullptr;
    }
};

QTEST_MAIN(CustomViewTests)
#include "CustomViewTests.moc"
