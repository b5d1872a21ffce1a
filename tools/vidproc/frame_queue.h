// A short queue between two threads, each of which may end it.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

namespace vidproc::tool {

template <typename Item>
class BoundedQueue {
 public:
  explicit BoundedQueue(std::size_t capacity) : capacity(capacity) {}

  /// Waits for room. @return false where the reading side has stopped: there is no use in more
  bool Push(Item item) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return items.size() < capacity || isStopped; });
    if (isStopped) return false;
    items.push_back(std::move(item));
    changed.notify_all();
    return true;
  }

  /// Nothing more will come; what is in the queue is still read, and then `failure` thrown, if there is one.
  void End(std::exception_ptr failure = nullptr) {
    const std::lock_guard lock(mutex);
    hasEnded = true;
    error = std::move(failure);
    changed.notify_all();
  }

  /// Waits for an item; nothing at the end or where reading has been stopped.
  std::optional<Item> Pop() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return !items.empty() || hasEnded || isStopped; });
    if (items.empty()) {
      if (error) std::rethrow_exception(error);
      return std::nullopt;
    }
    Item item = std::move(items.front());
    items.pop_front();
    changed.notify_all();
    return item;
  }

  /// No more is wanted. Any thread.
  void Stop() {
    const std::lock_guard lock(mutex);
    isStopped = true;
    items.clear();
    changed.notify_all();
  }

 private:
  std::size_t capacity;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Item> items;
  std::exception_ptr error;
  bool hasEnded = false;
  bool isStopped = false;
};

}  // namespace vidproc::tool
