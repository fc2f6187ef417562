// A move-only callable: what the run loop and the queues store for every task.
//
// `std::function` must be copyable, so it cannot hold a lambda that owns a `std::unique_ptr`, and
// it allocates for anything larger than two pointers. A task is run once by the thread that takes
// it, so copying is never needed. Callables of up to `inlineCapacity` bytes (a lambda capturing a
// few pointers, a shared_ptr and a string, say) live inside the object; larger ones are put on the
// heap once, when wrapped. Moving never allocates.
//
//     UniqueFunction<void()> task = [file = std::make_unique<File>()] { file->flush(); };
//     std::move(task)();  // or task(): a task may be called more than once, like a function
//
// An empty UniqueFunction (default-constructed or moved from) must not be called.
#pragma once

#include <cstddef>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

#include "quoddle/base/Precondition.h"

namespace quod {

template <typename Signature>
class UniqueFunction;

template <typename Result, typename... Arguments>
class UniqueFunction<Result(Arguments...)> {
  public:
    static constexpr std::size_t inlineCapacity = 48;

    UniqueFunction() noexcept = default;
    UniqueFunction(std::nullptr_t) noexcept {}

    template <typename Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, UniqueFunction> &&
             std::is_invocable_r_v<Result, std::decay_t<Callable>&, Arguments...>)
        UniqueFunction(Callable&& callable) {  // NOLINT: implicit, like std::function
        using Stored = std::decay_t<Callable>;
        if constexpr (fitsInline<Stored>) {
            ::new (static_cast<void*>(storage_)) Stored(std::forward<Callable>(callable));
            operations_ = &inlineOperations<Stored>;
        } else {
            ::new (static_cast<void*>(storage_))
                Stored*(new Stored(std::forward<Callable>(callable)));
            operations_ = &heapOperations<Stored>;
        }
    }

    UniqueFunction(UniqueFunction&& other) noexcept : operations_(other.operations_) {
        if (operations_ != nullptr) {
            operations_->relocate(other.storage_, storage_);
            other.operations_ = nullptr;
        }
    }

    UniqueFunction& operator=(UniqueFunction&& other) noexcept {
        if (this != &other) {
            reset();
            if (other.operations_ != nullptr) {
                other.operations_->relocate(other.storage_, storage_);
                operations_ = std::exchange(other.operations_, nullptr);
            }
        }
        return *this;
    }

    UniqueFunction& operator=(std::nullptr_t) noexcept {
        reset();
        return *this;
    }

    UniqueFunction(const UniqueFunction&) = delete;
    UniqueFunction& operator=(const UniqueFunction&) = delete;

    ~UniqueFunction() { reset(); }

    explicit operator bool() const noexcept { return operations_ != nullptr; }

    Result operator()(Arguments... arguments) {
        QUOD_PRECONDITION(operations_ != nullptr, "calling an empty UniqueFunction");
        return operations_->invoke(storage_, std::forward<Arguments>(arguments)...);
    }

  private:
    struct Operations {
        Result (*invoke)(void* storage, Arguments&&... arguments);
        // Move-constructs into `to` and destroys what is left in `from`.
        void (*relocate)(void* from, void* to) noexcept;
        void (*destroy)(void* storage) noexcept;
    };

    template <typename Stored>
    static constexpr bool fitsInline = sizeof(Stored) <= inlineCapacity &&
                                       alignof(Stored) <= alignof(std::max_align_t) &&
                                       std::is_nothrow_move_constructible_v<Stored>;

    template <typename Stored>
    static constexpr Operations inlineOperations{
        [](void* storage, Arguments&&... arguments) -> Result {
            return std::invoke(*std::launder(static_cast<Stored*>(storage)),
                               std::forward<Arguments>(arguments)...);
        },
        [](void* from, void* to) noexcept {
            Stored* source = std::launder(static_cast<Stored*>(from));
            ::new (to) Stored(std::move(*source));
            source->~Stored();
        },
        [](void* storage) noexcept { std::launder(static_cast<Stored*>(storage))->~Stored(); }};

    template <typename Stored>
    static constexpr Operations heapOperations{
        [](void* storage, Arguments&&... arguments) -> Result {
            return std::invoke(**std::launder(static_cast<Stored**>(storage)),
                               std::forward<Arguments>(arguments)...);
        },
        [](void* from, void* to) noexcept {
            ::new (to) Stored*(*std::launder(static_cast<Stored**>(from)));
        },
        [](void* storage) noexcept { delete *std::launder(static_cast<Stored**>(storage)); }};

    void reset() noexcept {
        if (operations_ != nullptr) std::exchange(operations_, nullptr)->destroy(storage_);
    }

    alignas(std::max_align_t) std::byte storage_[inlineCapacity];
    const Operations* operations_ = nullptr;
};

}  // namespace quod
