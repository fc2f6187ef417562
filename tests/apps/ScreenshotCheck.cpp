// screenshot_check FILE...: fails unless every file is an image that shows more than one colour.
// The test command runs it over the demo's offscreen screenshots (scripts/run without a display):
// a window that rendered nothing is a single colour from edge to edge, and a missing or broken
// file does not load.
#include <QImage>
#include <QSet>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: screenshot_check FILE...\n");
        return 2;
    }
    int failures = 0;
    for (int index = 1; index < argc; ++index) {
        const QImage image(QString::fromLocal8Bit(argv[index]));
        if (image.isNull()) {
            std::fprintf(stderr, "screenshot_check: %s is missing or not an image\n", argv[index]);
            ++failures;
            continue;
        }
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                colours.insert(image.pixel(x, y));
        }
        std::printf("screenshot_check: %s: %d x %d pixels, %lld colours\n", argv[index],
                    image.width(), image.height(), static_cast<long long>(colours.size()));
        if (colours.size() < 2) {
            std::fprintf(stderr, "screenshot_check: %s is blank\n", argv[index]);
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
