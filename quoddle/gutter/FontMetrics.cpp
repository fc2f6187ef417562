#include "quoddle/gutter/FontMetrics.h"

#include <unicode/utf8.h>

#include <mutex>
#include <utility>

namespace quod {
namespace {

class MonospacedEstimate : public FontMetrics {
  public:
    Size sizeOfString(std::string_view text, const Font& font) const override {
        // Code points, not bytes: a digit of another script is still one character wide.
        int64_t characters = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (!U8_IS_TRAIL(static_cast<uint8_t>(text[i]))) ++characters;
        }
        const double em = font.pointSize();
        return {0.6 * em * static_cast<double>(characters), 1.2 * em};
    }
};

struct Installed {
    std::mutex mutex;
    std::shared_ptr<const FontMetrics> metrics = std::make_shared<MonospacedEstimate>();
};

Installed& installedMetrics() {
    static Installed* const shared = new Installed;
    return *shared;
}

}  // namespace

std::shared_ptr<const FontMetrics> FontMetrics::installed() {
    Installed& shared = installedMetrics();
    std::lock_guard lock(shared.mutex);
    return shared.metrics;
}

void FontMetrics::install(std::shared_ptr<const FontMetrics> metrics) {
    Installed& shared = installedMetrics();
    std::lock_guard lock(shared.mutex);
    shared.metrics = metrics ? std::move(metrics) : std::make_shared<MonospacedEstimate>();
}

}  // namespace quod
