#include "quoddle/qt/Storyboard.h"

namespace quod {
namespace {

std::unique_ptr<Storyboard>& mainStoryboard() {
    static std::unique_ptr<Storyboard> storyboard;
    return storyboard;
}

}  // namespace

void Storyboard::registerController(std::string identifier, Factory factory) {
    factories_.insert_or_assign(std::move(identifier), std::move(factory));
}

std::unique_ptr<QObject> Storyboard::instantiateController(std::string_view identifier) const {
    const auto found = factories_.find(identifier);
    if (found == factories_.end() || !found->second) return nullptr;
    return found->second();
}

Storyboard* Storyboard::main() {
    return mainStoryboard().get();
}

void Storyboard::setMain(std::unique_ptr<Storyboard> storyboard) {
    mainStoryboard() = std::move(storyboard);
}

}  // namespace quod
