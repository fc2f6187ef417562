// Column headers on real item views, attribute sets as text formats laid out by Qt, and file
// icons from an icon theme made by the test.
#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QHeaderView>
#include <QStandardItemModel>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTreeWidget>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>

#include "quoddle/interface/ColumnProtocol.h"
#include "quoddle/qt/ColumnHeaders.h"
#include "quoddle/qt/FileIcon.h"
#include "quoddle/qt/QtConversions.h"
#include "quoddle/qt/QtPlatform.h"
#include "quoddle/runtime/Localize.h"
#include "tests/support/JobColumns.h"
#include "tests/support/TemporaryFolder.h"

using namespace quod;

namespace {

using quod::testing::JobColumn;
using quod::testing::JobColumns;

QString headerTitle(const QAbstractItemView& view, int section) {
    return view.model()->headerData(section, Qt::Horizontal).toString();
}

// Where the first line of a one-line document of width 300 starts, with `format` on its block.
double lineStart(const QTextBlockFormat& format, Qt::LayoutDirection direction) {
    QTextDocument document;
    QTextOption option = document.defaultTextOption();
    option.setTextDirection(direction);
    document.setDefaultTextOption(option);
    document.setTextWidth(300);
    QTextCursor cursor(&document);
    cursor.setBlockFormat(format);
    cursor.insertText("abc");
    const QTextBlock block = document.firstBlock();
    return document.documentLayout()->blockBoundingRect(block).x() +
           block.layout()->lineAt(0).naturalTextRect().x();
}

QColor centreColour(const QIcon& icon, int size) {
    const QImage image = icon.pixmap(size).toImage();
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

}  // namespace

class InterfaceQtTests : public QObject {
    Q_OBJECT

  private Q_SLOTS:
    void initTestCase() { QtPlatform::install(); }

    void headersShowTheTitlesAndKnowTheirColumnsWhereverTheyAreMoved() {
        QStandardItemModel model(2, 3);
        QTableView table;
        table.setModel(&model);
        QVERIFY(prepareHeaders<JobColumns>(table));
        QCOMPARE(headerTitle(table, 0), QString("Status"));
        QCOMPARE(headerTitle(table, 2), QString("Scheduled"));

        table.horizontalHeader()->moveSection(2, 0);  // as a user drags it
        const int firstShown = table.horizontalHeader()->logicalIndex(0);
        QCOMPARE(JobColumns::column(columnIdentifier(table, firstShown)), JobColumn::scheduled);
        QCOMPARE(columnIdentifier(table, 7), std::string());

        QTreeWidget tree;
        tree.setColumnCount(3);
        QVERIFY(prepareHeaders<JobColumns>(tree));
        QCOMPARE(tree.headerItem()->text(1), QString("Name"));
        QCOMPARE(JobColumns::column(columnIdentifier(tree, 1)), JobColumn::name);

        QTableWidget widget(0, 3);  // has no header items until it is given some
        QVERIFY(prepareHeaders<JobColumns>(widget));
        QCOMPARE(widget.horizontalHeaderItem(2)->text(), QString("Scheduled"));
        QCOMPARE(JobColumns::column(columnIdentifier(widget, 0)), JobColumn::status);
    }

    void headersAViewCannotTakeAreLeftAndReported() {
        QStandardItemModel narrow(0, 2);
        QTableView table;
        table.setModel(&narrow);
        QVERIFY(!prepareHeaders<JobColumns>(table));
        QCOMPARE(headerTitle(table, 1), QString("Name"));  // what fits is set
        QCOMPARE(narrow.columnCount(), 2);

        QTableView withoutModel;
        QVERIFY(!prepareHeaders<JobColumns>(withoutModel));
    }

    void attributeSetsBecomeTheFormatsQtDrawsWith() {
        const Attributes attributes{
            .font = Font::systemFont(13),
            .foregroundColor = Color::withRed(1, 0, 0, 1),
            .backgroundColor = Color::withPatternImage("paper"),  // Qt cannot draw it
            .paragraphStyle = ParagraphStyle{.alignment = TextAlignment::right, .lineSpacing = 4},
        };
        const QTextCharFormat characters = toQTextCharFormat(attributes);
        QCOMPARE(characters.foreground().color(), QColor(255, 0, 0));
        QVERIFY(!characters.hasProperty(QTextFormat::BackgroundBrush));
        QCOMPARE(characters.font().pointSizeF(), 13.0);
        QVERIFY(toQTextCharFormat({}).properties().isEmpty());

        const QTextBlockFormat paragraph = toQTextBlockFormat(*attributes.paragraphStyle);
        QCOMPARE(paragraph.lineHeight(), 4.0);
        QCOMPARE(paragraph.lineHeightType(), int(QTextBlockFormat::LineDistanceHeight));
        QCOMPARE(toQTextBlockFormat({.lineSpacing = -3}).lineHeight(), 0.0);
        QCOMPARE(toQTextBlockFormat({.lineSpacing = std::numeric_limits<double>::quiet_NaN()})
                     .lineHeight(),
                 0.0);

        // Left and right stay where they are in right-to-left text; natural follows the text.
        const auto start = [](TextAlignment alignment, Qt::LayoutDirection direction) {
            return lineStart(toQTextBlockFormat({.alignment = alignment}), direction);
        };
        QVERIFY(start(TextAlignment::right, Qt::RightToLeft) > 250);
        QVERIFY(start(TextAlignment::right, Qt::LeftToRight) > 250);
        QVERIFY(start(TextAlignment::left, Qt::RightToLeft) < 50);
        QVERIFY(start(TextAlignment::natural, Qt::LeftToRight) < 50);
        QVERIFY(start(TextAlignment::natural, Qt::RightToLeft) > 250);
        const double centre = start(TextAlignment::center, Qt::LeftToRight);
        QVERIFY(centre > 100 && centre < 200);
    }

    void fileIconsComeFromTheThemeByContentTypeThenFromTheStyle() {
        const testing::TemporaryFolder folder("icon-theme");
        folder.write("icons/probe/index.theme",
                     "[Icon Theme]\nName=Probe\nDirectories=32/mimetypes,32/places\n\n"
                     "[32/mimetypes]\nSize=32\nType=Fixed\n\n[32/places]\nSize=32\nType=Fixed\n");
        const auto square = [&](const char* relative, QColor colour) {
            QImage image(32, 32, QImage::Format_ARGB32);
            image.fill(colour);
            std::filesystem::create_directories(folder.path(relative).parent_path());
            QVERIFY(image.save(QString::fromStdString(folder.path(relative).string())));
        };
        square("icons/probe/32/mimetypes/text-plain.png", Qt::red);
        square("icons/probe/32/mimetypes/image-x-generic.png", Qt::green);
        square("icons/probe/32/places/folder.png", Qt::blue);
        QIcon::setThemeSearchPaths({QString::fromStdString(folder.path("icons").string())});
        QIcon::setThemeName("probe");

        const auto fileIcon = [&](const std::string& relative, bool directory = false) {
            return Interface::icon(Url::fileURL(folder.path(relative).string(), directory), 24);
        };
        folder.write("files/notes.txt", "Bread, milk\n");
        folder.write("files/data.bin", std::string("\0\1\2\3\xff\xfe", 6));
        square("files/shot.png", Qt::white);
        const QIcon text = fileIcon("files/notes.txt");
        QCOMPARE(text.pixmap(24).size(), QSize(24, 24));
        QCOMPARE(centreColour(text, 24), QColor(Qt::red));
        QCOMPARE(centreColour(fileIcon("files/shot.png"), 24), QColor(Qt::green));  // generic
        QCOMPARE(centreColour(fileIcon("files", true), 24), QColor(Qt::blue));
        // Nothing in the theme: the style's own file icon.
        const QIcon other = fileIcon("files/data.bin");
        QVERIFY(!other.isNull());
        for (const QColor themes : {QColor(Qt::red), QColor(Qt::green), QColor(Qt::blue)})
            QVERIFY(centreColour(other, 24) != themes);
        QVERIFY(Interface::icon(Url::fileURL(folder.path("files/notes.txt").string()), 0).isNull());
    }
};

QTEST_MAIN(InterfaceQtTests)
#include "InterfaceQtTests.moc"
