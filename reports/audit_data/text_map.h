// TextMap: values by text key, probed with a view of a cell's text.
//
// The audit report asks the same few questions of every audit row (which
// employee, which captions, which user name) and the answers repeat: a
// million rows name a few thousand keys. A node-based map pays a division
// and a pointer chase into scattered nodes per probe; this probes a small
// array of slots (part of the key's hash and an entry number; open
// addressing, at most half full) and compares a key only where that part
// of the hash matches. Keys and values are held in the order they were
// added. A pointer to a value is only good until the next add().
// Single-threaded.
#pragma once

#include <cstdint>
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
    const size_t h = hash(key);
    const uint32_t tag = static_cast<uint32_t>(h >> 32);
    for (size_t i = h & mask();; i = (i + 1) & mask()) {
      const Slot s = slots_[i];
      if (s.entry < 0) return nullptr;
      if (s.tag == tag && keys_[static_cast<size_t>(s.entry)] == key) return &values_[static_cast<size_t>(s.entry)];
    }
  }
  // Adds a key that find() did not find.
  T& add(std::string_view key, T value) {
    if ((keys_.size() + 1) * 2 > slots_.size()) grow(slots_.empty() ? 64 : slots_.size() * 2);
    keys_.emplace_back(key);
    values_.push_back(std::move(value));
    place(keys_.size() - 1);
    return values_.back();
  }
  size_t size() const { return keys_.size(); }
  // Room for this many keys without growing.
  void reserve(size_t keys) {
    size_t slots = 64;
    while (slots < keys * 2) slots *= 2;
    if (slots > slots_.size()) grow(slots);
    keys_.reserve(keys);
    values_.reserve(keys);
  }

 private:
  // A slot is small (the probe's cache lines): the high half of the key's
  // hash and where the key and its value are.
  struct Slot {
    uint32_t tag = 0;
    int32_t entry = -1;
  };
  static size_t hash(std::string_view key) { return std::hash<std::string_view>()(key); }
  size_t mask() const { return slots_.size() - 1; }
  void place(size_t entry) {
    const size_t h = hash(keys_[entry]);
    size_t i = h & mask();
    while (slots_[i].entry >= 0) i = (i + 1) & mask();
    slots_[i] = Slot{static_cast<uint32_t>(h >> 32), static_cast<int32_t>(entry)};
  }
  void grow(size_t slots) {
    slots_.assign(slots, Slot{});
    for (size_t e = 0; e < keys_.size(); ++e) place(e);
  }

  std::vector<Slot> slots_;  // a power of two, at most half used
  std::vector<std::string> keys_;
  std::vector<T> values_;
};

}  // namespace orvalis::reports
