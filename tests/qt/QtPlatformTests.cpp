#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QSignalSpy>
#include <QTest>

#include "quoddle/gutter/FontMetrics.h"
#include "quoddle/interface/UserInterfaceLayoutDirection.h"
#include "quoddle/preferences/Appearance.h"
#include "quoddle/preferences/Color.h"
#include "quoddle/preferences/Font.h"
#include "quoddle/qt/ExtraTextView.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtPlatform.h"

using namespace quod;

namespace {

QPalette darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x20, 0x24, 0x28));
    palette.setColor(QPalette::WindowText, QColor(0xe0, 0xe0, 0xe0));
    palette.setColor(QPalette::Base, QColor(0x10, 0x12, 0x14));
    palette.setColor(QPalette::Text, QColor(0xd0, 0xd8, 0xe0));
    palette.setColor(QPalette::Highlight, QColor(0x30, 0x50, 0x90));
    return palette;
}

bool isDark() {
    return Appearance::match(PlatformAppearance::current()) == Appearance::dark;
}

// Whether a core colour, resolved now, is the Qt colour (to 8 bits a channel).
bool sameColor(const Color& color, const QColor& expected) {
    return toQColor(color).rgba() == expected.rgba();
}

}  // namespace

class QtPlatformTests : public QObject {
    Q_OBJECT

    QPalette original_;

  private Q_SLOTS:
    void initTestCase() {
        original_ = QApplication::palette();
        QtPlatform::install();
    }
    void cleanup() { QApplication::setPalette(original_); }

    void appearanceAndSystemColoursFollowTheApplicationPalette() {
        QVERIFY(original_.color(QPalette::Window).lightnessF() >= 0.5);
        QVERIFY(!isDark());
        QVERIFY(sameColor(Color::windowBackgroundColor(), original_.color(QPalette::Window)));
        QVERIFY(
            sameColor(Color::selectedTextBackgroundColor(), original_.color(QPalette::Highlight)));

        QSignalSpy changes(&QtPlatform::install(), &QtPlatform::appearanceChanged);
        const QPalette dark = darkPalette();
        QApplication::setPalette(dark);
        QCOMPARE(changes.count(), 1);  // once, however many widgets heard of it
        QVERIFY(isDark());
        QVERIFY(sameColor(Color::windowBackgroundColor(), dark.color(QPalette::Window)));
        QVERIFY(sameColor(Color::textBackgroundColor(), dark.color(QPalette::Base)));
        QVERIFY(sameColor(Color::textColor(), dark.color(QPalette::Text)));

        // Back to light: the light values are the light palette's, the dark ones are kept.
        QApplication::setPalette(original_);
        QCOMPARE(changes.count(), 2);
        QVERIFY(!isDark());
        QVERIFY(sameColor(Color::windowBackgroundColor(), original_.color(QPalette::Window)));
        PlatformAppearance::setCurrent(
            PlatformAppearance(std::string(PlatformAppearance::darkAquaName)));
        QVERIFY(sameColor(Color::windowBackgroundColor(), dark.color(QPalette::Window)));
        PlatformAppearance::setCurrent(
            PlatformAppearance(std::string(PlatformAppearance::aquaName)));
    }

    void extraTextViewRepaintsInTheNewAppearance() {
        ExtraTextView view(std::make_shared<QuodTextView>(u"read me"));
        // Its own palette does not decide its colours: the appearance's system colours do.
        QPalette own = view.palette();
        own.setColor(QPalette::Base, Qt::magenta);
        own.setColor(QPalette::Text, Qt::magenta);
        view.setPalette(own);
        view.resize(200, 80);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const QPoint empty(150, 60);
        QCOMPARE(view.grab().toImage().pixelColor(empty), original_.color(QPalette::Base));

        const QPalette dark = darkPalette();
        QApplication::setPalette(dark);
        QCOMPARE(view.grab().toImage().pixelColor(empty), dark.color(QPalette::Base));
        QCOMPARE(view.textColor(), dark.color(QPalette::Text));

        // Read-mostly: typing changes nothing.
        view.setFocus();
        QTest::keyClicks(&view, "x");
        QCOMPARE(view.textView().length(), int64_t{7});
    }

    void fontsComeFromQtAndAreDrawnInTheFaceTheyName() {
        const QFont general = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        QCOMPARE(Font::systemFont(0).pointSize(), general.pointSizeF());
        QCOMPARE(QFontInfo(toQFont(Font::systemFont(12))).family(), QFontInfo(general).family());
        const std::optional<Font> fixed = Font::userFixedPitchFont(10);
        QVERIFY(fixed.has_value());
        QVERIFY(QFontInfo(toQFont(*fixed)).fixedPitch());

        const std::optional<Font> bold = Font::withName("DejaVuSansMono-Bold", 14);
        QVERIFY(bold.has_value());
        const QFontInfo boldInfo(toQFont(*bold));
        QCOMPARE(boldInfo.family(), QStringLiteral("DejaVu Sans Mono"));
        QVERIFY(boldInfo.bold());
        QCOMPARE(toQFont(*bold).pointSizeF(), 14.0);
        QCOMPARE(Font::withName("DejaVu Sans Mono", 12)->fontName(), std::string("DejaVuSansMono"));
        QVERIFY(!Font::withName("NoSuchFace-Regular", 12).has_value());

        // The gutter measures with Qt: "00" is as wide as Qt lays it out, a line as high.
        const Size measured = FontMetrics::installed()->sizeOfString("00", *bold);
        const QFontMetricsF metrics(toQFont(*bold));
        QCOMPARE(measured.width, metrics.horizontalAdvance(QStringLiteral("00")));
        QCOMPARE(measured.height, metrics.height());
    }

    void layoutDirectionFollowsTheApplication() {
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
        QVERIFY(Interface::rtl());
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
        QVERIFY(!Interface::rtl());
    }

    void convertingColoursIsQuietForAnyValue() {
        QVERIFY(!toQColor(Color::withPatternImage("paper")).isValid());
        const QColor clamped = toQColor(Color::withRed(2.0, -1.0, std::nan(""), 0.5));
        QCOMPARE(clamped, QColor::fromRgbF(1, 0, 0, 0.5));
        QCOMPARE(toQColor(Color::withWhite(1, 1)), QColor(Qt::white));
    }
};

QTEST_MAIN(QtPlatformTests)
#include "QtPlatformTests.moc"
