// Thumbnails through the shared cache, made by Qt's image readers, in a cache folder of the
// test's own ($XDG_CACHE_HOME is set before anything reads it).
#include <fcntl.h>
#include <sys/stat.h>

#include <QCryptographicHash>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QTest>
#include <QtEndian>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "quoddle/interface/QuickLook.h"
#include "quoddle/interface/ThumbnailGenerator.h"
#include "quoddle/qt/QtPlatform.h"
#include "tests/support/TemporaryFolder.h"

using namespace quod;

namespace {

const testing::TemporaryFolder cacheHome("thumbnail-cache");
const bool cacheHomeSet = ::setenv("XDG_CACHE_HOME", cacheHome.path().c_str(), 1) == 0;

struct stat status(const std::string& path) {
    struct stat result {};
    if (::stat(path.c_str(), &result) != 0) result.st_ino = 0;
    return result;
}

// Where the thumbnail of `file` (a path of plain characters) belongs in the `folder` size.
std::string expectedPath(const std::string& file, const char* folder) {
    const QByteArray uri = QByteArray("file://") + QByteArray::fromStdString(file);
    const QByteArray digest = QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex();
    return cacheHome.path().string() + "/thumbnails/" + folder + "/" + digest.toStdString() +
           ".png";
}

std::string image(const testing::TemporaryFolder& folder, const char* name, QSize size,
                  QColor colour = Qt::red) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(colour);
    const std::string path = folder.path(name).string();
    if (!picture.save(QString::fromStdString(path))) return {};
    return path;
}

std::optional<std::string> thumbnail(const std::string& file, double width, double height) {
    const auto url = Interface::quickLookImageURL(Url::fileURL(file), width, height);
    if (!url) return std::nullopt;
    return url->path();
}

// A text chunk of a PNG file, read here rather than by QImageReader, which takes the first ":"
// of "Thumb::URI" for the end of the key.
QString text(const std::string& png, const char* key) {
    QFile file(QString::fromStdString(png));
    if (!file.open(QIODevice::ReadOnly)) return {};
    QByteArray chunks = file.readAll().mid(8);
    while (chunks.size() >= 12) {
        const auto length = static_cast<qsizetype>(qFromBigEndian<quint32>(chunks.constData()));
        const QByteArray type = chunks.mid(4, 4);
        const QByteArray data = chunks.mid(8, length);
        const qsizetype nul = data.indexOf('\0');
        chunks = chunks.mid(12 + length);
        if (nul < 0 || data.left(nul) != key) continue;
        // qUncompress wants the size first; 1 MiB is more than any text here.
        const auto inflate = [](const QByteArray& compressed) {
            return qUncompress(QByteArray("\x00\x10\x00\x00", 4) + compressed);
        };
        if (type == "tEXt") return QString::fromLatin1(data.mid(nul + 1));
        if (type == "zTXt") return QString::fromLatin1(inflate(data.mid(nul + 2)));
        if (type == "iTXt") {
            // Flag, method, language tag, translated keyword, then the text.
            const bool compressed = data.at(nul + 1) != 0;
            const qsizetype language = data.indexOf('\0', nul + 3);
            const qsizetype translated = data.indexOf('\0', language + 1);
            const QByteArray value = data.mid(translated + 1);
            return QString::fromUtf8(compressed ? inflate(value) : value);
        }
    }
    return {};
}

void setModificationTime(const std::string& path, time_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    QVERIFY(::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0);
}

}  // namespace

class QuickLookTests : public QObject {
    Q_OBJECT

  private Q_SLOTS:
    void initTestCase() {
        QVERIFY(cacheHomeSet);
        QtPlatform::install();
    }

    void aThumbnailIsMadeOnceFiledByItsURIAndMadeAgainWhenTheFileChanges() {
        const testing::TemporaryFolder folder("photos");
        const std::string photo = image(folder, "wide.png", {600, 300});
        const std::string expected = expectedPath(photo, "large");

        QCOMPARE(thumbnail(photo, 200, 150), std::optional(expected));
        const struct stat made = status(expected);
        QCOMPARE(made.st_mode & 07777, mode_t{0600});
        QCOMPARE(status(cacheHome.path().string() + "/thumbnails").st_mode & 07777, mode_t{0700});
        QCOMPARE(status(cacheHome.path().string() + "/thumbnails/large").st_mode & 07777,
                 mode_t{0700});
        QCOMPARE(QImageReader(QString::fromStdString(expected)).size(), QSize(256, 128));
        QCOMPARE(text(expected, "Thumb::URI"), QString::fromStdString("file://" + photo));
        QCOMPARE(text(expected, "Thumb::MTime"), QString::number(status(photo).st_mtime));
        QCOMPARE(text(expected, "Thumb::Size"), QString::number(status(photo).st_size));

        // The thumbnail's own time stamp, set far back, tells whether it was written again (its
        // inode may not: a new file can get the number the old one just gave back).
        constexpr time_t untouched = 1'000'000;
        const auto rewritten = [&] { return status(expected).st_mtime != untouched; };

        // Asked again: the same file, not written again.
        setModificationTime(expected, untouched);
        QCOMPARE(thumbnail(photo, 256, 10), std::optional(expected));
        QVERIFY(!rewritten());

        // One cut short (its writer died) is made anew.
        std::filesystem::resize_file(expected, static_cast<std::uintmax_t>(made.st_size / 2));
        QCOMPARE(thumbnail(photo, 200, 150), std::optional(expected));
        QVERIFY(rewritten());
        QCOMPARE(QImageReader(QString::fromStdString(expected)).size(), QSize(256, 128));

        // The photo changes: a new thumbnail with the new time, and nothing else left beside it.
        setModificationTime(expected, untouched);
        setModificationTime(photo, status(photo).st_mtime + 60);
        QCOMPARE(thumbnail(photo, 200, 150), std::optional(expected));
        QVERIFY(rewritten());
        QCOMPARE(text(expected, "Thumb::MTime"), QString::number(status(photo).st_mtime));
        std::vector<std::string> filed;
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::path(expected).parent_path()))
            filed.push_back(entry.path().string());
        QCOMPARE(filed, std::vector<std::string>{expected});
    }

    void theLargerSideChoosesTheSizeAndSmallImagesAreNotEnlarged() {
        const testing::TemporaryFolder folder("sizes");
        const std::string small = image(folder, "small.jpg", {64, 40});
        QCOMPARE(thumbnail(small, 100, 20), std::optional(expectedPath(small, "normal")));
        QCOMPARE(QImageReader(QString::fromStdString(expectedPath(small, "normal"))).size(),
                 QSize(64, 40));
        const std::string tall = image(folder, "tall.jpg", {300, 1500});
        QCOMPARE(thumbnail(tall, 10, 600), std::optional(expectedPath(tall, "xx-large")));
        const QSize fitted =
            QImageReader(QString::fromStdString(expectedPath(tall, "xx-large"))).size();
        QCOMPARE(fitted.height(), 1024);
        QVERIFY(std::abs(fitted.width() - 204.8) < 1);
        QCOMPARE(thumbnail(tall, 5000, 1), std::optional(expectedPath(tall, "xx-large")));
        QCOMPARE(thumbnail(tall, 512, 512), std::optional(expectedPath(tall, "x-large")));
    }

    void anotherProgramsCurrentThumbnailIsUsedAndAnOutdatedOneReplacedPrivately() {
        const testing::TemporaryFolder folder("shared");
        const std::string photo = image(folder, "photo.png", {300, 300});
        const std::string filed = expectedPath(photo, "normal");
        const auto writeForeign = [&](time_t mtime, mode_t mode) {
            QImage foreign(128, 128, QImage::Format_RGB32);
            foreign.fill(Qt::green);
            foreign.setText("Thumb::URI", QString::fromStdString("file://" + photo));
            foreign.setText("Thumb::MTime", QString::number(mtime));
            QVERIFY(std::filesystem::create_directories(filed.substr(0, filed.rfind('/'))) ||
                    std::filesystem::is_directory(filed.substr(0, filed.rfind('/'))));
            QVERIFY(foreign.save(QString::fromStdString(filed)));
            QVERIFY(::chmod(filed.c_str(), mode) == 0);
        };

        writeForeign(status(photo).st_mtime, 0600);
        QCOMPARE(thumbnail(photo, 128, 128), std::optional(filed));
        QCOMPARE(QImage(QString::fromStdString(filed)).pixelColor(5, 5), QColor(Qt::green));

        writeForeign(status(photo).st_mtime - 1, 0644);  // older, and readable by everyone
        QCOMPARE(thumbnail(photo, 128, 128), std::optional(filed));
        QCOMPARE(QImage(QString::fromStdString(filed)).pixelColor(5, 5), QColor(Qt::red));
        QCOMPARE(status(filed).st_mode & 07777, mode_t{0600});
    }

    void whatIsNoImageOrCannotBeAskedForGetsNoThumbnailAndWritesNothing() {
        const testing::TemporaryFolder folder("not-images");
        const std::string notes = folder.write("notes.txt", "Bread, milk\n").string();
        const std::string fake = folder.write("fake.png", "not a picture at all\n").string();
        const std::string photo = image(folder, "photo.png", {50, 50});
        QCOMPARE(thumbnail(notes, 128, 128), std::nullopt);
        QCOMPARE(thumbnail(fake, 128, 128), std::nullopt);
        QVERIFY(!std::filesystem::exists(expectedPath(notes, "normal")));
        QVERIFY(!std::filesystem::exists(expectedPath(fake, "normal")));
        QCOMPARE(thumbnail(folder.path("missing.png").string(), 128, 128), std::nullopt);
        QCOMPARE(thumbnail(folder.path().string(), 128, 128), std::nullopt);
        QCOMPARE(thumbnail(photo, 0, 0), std::nullopt);
        QCOMPARE(thumbnail(photo, -5, 100), std::nullopt);
        QCOMPARE(thumbnail(photo, std::numeric_limits<double>::quiet_NaN(), 10), std::nullopt);
        QCOMPARE(thumbnail(photo, std::numeric_limits<double>::infinity(), 10), std::nullopt);

        // Thumbnails are not made of thumbnails.
        const auto made = thumbnail(photo, 100, 100);
        QVERIFY(made.has_value());
        QCOMPARE(thumbnail(*made, 100, 100), std::nullopt);

        // Without a generator only what is cached already is answered.
        const auto generator = ThumbnailGenerator::installed();
        ThumbnailGenerator::install(nullptr);
        const std::string other = image(folder, "other.png", {50, 50});
        QCOMPARE(thumbnail(other, 100, 100), std::nullopt);
        QCOMPARE(thumbnail(photo, 100, 100), made);
        ThumbnailGenerator::install(generator);
    }
};

QTEST_MAIN(QuickLookTests)
#include "QuickLookTests.moc"
