#include "quoddle/interface/ThumbnailGenerator.h"

#include <mutex>

namespace quod {
namespace {

std::mutex& installationMutex() {
    static std::mutex mutex;
    return mutex;
}

std::shared_ptr<const ThumbnailGenerator>& installation() {
    static auto* const generator = new std::shared_ptr<const ThumbnailGenerator>;
    return *generator;
}

}  // namespace

std::shared_ptr<const ThumbnailGenerator> ThumbnailGenerator::installed() {
    const std::lock_guard lock(installationMutex());
    return installation();
}

void ThumbnailGenerator::install(std::shared_ptr<const ThumbnailGenerator> generator) {
    const std::lock_guard lock(installationMutex());
    installation() = std::move(generator);
}

}  // namespace quod
