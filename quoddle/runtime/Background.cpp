#include "quoddle/runtime/Background.h"

#include <string>

#include "quoddle/runtime/Const.h"

namespace quod {

const DispatchQueue& Background() {
    static const DispatchQueue* const queue =
        new DispatchQueue(std::string(Const::QueueLabel::background), QualityOfService::standard,
                          DispatchQueue::Attributes::concurrent);
    return *queue;
}

}  // namespace quod
