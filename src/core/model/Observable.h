#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace lumora {

// Keeps a subscription alive; destroying or resetting it unsubscribes. Outliving the signal
// is harmless.
class Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
    ~Subscription() { reset(); }
    Subscription(Subscription&& other) noexcept : cancel_(std::exchange(other.cancel_, {})) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            reset();
            cancel_ = std::exchange(other.cancel_, {});
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

    void reset() {
        if (auto cancel = std::exchange(cancel_, {})) cancel();
    }

  private:
    std::function<void()> cancel_;
};

// A list of callbacks without arguments. Main thread only. A callback may subscribe or
// unsubscribe others while the signal is being emitted: one removed during the emission is
// not called any more, one added is called from the next emission on.
class Signal {
  public:
    Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    [[nodiscard]] Subscription subscribe(std::function<void()> callback) const {
        const std::size_t id = slots_->next++;
        slots_->callbacks.emplace(id, std::make_shared<std::function<void()>>(std::move(callback)));
        return Subscription([weak = std::weak_ptr<Slots>(slots_), id] {
            if (auto slots = weak.lock()) slots->callbacks.erase(id);
        });
    }

    void emit() const {
        if (slots_->callbacks.empty()) return;
        // A copy, so that callbacks may change the subscriptions while we walk them.
        std::vector<std::pair<std::size_t, std::shared_ptr<std::function<void()>>>> now(
            slots_->callbacks.begin(), slots_->callbacks.end());
        for (const auto& [id, callback] : now) {
            if (slots_->callbacks.contains(id)) (*callback)();
        }
    }

  private:
    struct Slots {
        std::size_t next = 0;
        std::map<std::size_t, std::shared_ptr<std::function<void()>>> callbacks;
    };
    std::shared_ptr<Slots> slots_ = std::make_shared<Slots>();
};

// A published field: subscribers hear that it is about to change, before the new value is
// stored (so an observer that reads it then still sees the old value). Every assignment
// notifies, equal or not. A field may also forward its notifications to an owner-wide signal,
// so a view can follow the whole object through one subscription.
template <class T>
class Published {
  public:
    explicit Published(T initial = T{}, const Signal* owner = nullptr)
        : value_(std::move(initial)), owner_(owner) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    [[nodiscard]] const T& get() const { return value_; }
    [[nodiscard]] const T& operator*() const { return value_; }
    [[nodiscard]] const T* operator->() const { return &value_; }

    [[nodiscard]] Subscription subscribe(std::function<void()> willChange) const {
        return willChange_.subscribe(std::move(willChange));
    }

    void set(T value) {
        notify();
        value_ = std::move(value);
    }

    // An in-place change: notifies, then lets `change` edit the value.
    template <class F>
    void modify(F&& change) {
        notify();
        std::forward<F>(change)(value_);
    }

  private:
    void notify() const {
        willChange_.emit();
        if (owner_) owner_->emit();
    }

    T value_;
    const Signal* owner_;
    Signal willChange_;
};

}  // namespace lumora
