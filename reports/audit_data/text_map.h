// TextMap: values by text key, probed with a view of a cell's text.
//
// The audit report asks the same few questions of every audit row (which
// employee, which captions, which user name) and the answers repeat: a
// million rows name a few thousand keys. A node-based map pays a division
// and a pointer chase into scattered nodes per probe; this keeps the keys
// (short texts, held inside their strings) and values side by side in one
// array, open addressing at most half full. Entries never move once the
// map has stopped growing, but a pointer to a value is only good until the
// next add(). Single-threaded.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvalis::reports {

template <class T>
class TextMap {
 public:
  T* find(std::string_view key) {
    if (slots_.empty()) return nullptr;
    for (size_t i = hash(key) & mask();; i = (i + 1) & mask()) {
      Slot& s = slots_[i];
      if (!s.used) return nullptr;
      if (s.key == key) return &s.value;
    }
  }
  // Adds a key that find() did not find.
  T& add(std::string_view key, T value) {
    if ((used_ + 1) * 2 > slots_.size()) grow(slots_.empty() ? 64 : slots_.size() * 2);
    ++used_;
    return place(std::string(key), std::move(value));
  }
  size_t size() const { return used_; }
  // Room for this many keys without growing.
  void reserve(size_t keys) {
    size_t slots = 64;
    while (slots < keys * 2) slots *= 2;
    if (slots > slots_.size()) grow(slots);
  }

 private:
  struct Slot {
    std::string key;
    T value{};
    bool used = false;
  };
  static size_t hash(std::string_view key) { return std::hash<std::string_view>()(key); }
  size_t mask() const { return slots_.size() - 1; }
  T& place(std::string key, T value) {
    size_t i = hash(key) & mask();
    while (slots_[i].used) i = (i + 1) & mask();
    slots_[i] = Slot{std::move(key), std::move(value), true};
    return slots_[i].value;
  }
  void grow(size_t slots) {
    std::vector<Slot> old = std::move(slots_);
    slots_.clear();
    slots_.resize(slots);
    for (Slot& s : old) {
      if (s.used) place(std::move(s.key), std::move(s.value));
    }
  }

  std::vector<Slot> slots_;  // a power of two, at most half used
  size_t used_ = 0;
};

}  // namespace orvalis::reports
