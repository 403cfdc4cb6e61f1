// TextSlots: texts to small numbers by open addressing over views.
//
// The HESA check asks two questions once per cell or row of a whole
// company: is this code in its code table, and which employee is this row
// for. A node-based hash map answers each with a division and a pointer
// chase into scattered nodes; this table keeps views of the texts (which
// must outlive it), their hashes and their numbers side by side in one
// array with room to spare, hashed with FNV-1a; texts are compared only
// when their hashes are equal. The first of equal texts keeps its number.
// Immutable once filled; single-threaded while filling.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace orvalis::reports::hesa {

class TextSlots {
 public:
  explicit TextSlots(size_t expected = 0) { rehash(expected); }

  // Files `text` under `number` (kept as a view); false when it was there.
  bool insert(std::string_view text, int32_t number) {
    if ((count_ + 1) * 2 > slots_.size()) rehash(slots_.size());
    const uint32_t h = hash(text);
    Slot* slot = probe(text, h);
    if (slot->number >= 0) return false;
    *slot = {text, h, number};
    ++count_;
    return true;
  }

  // The number filed under `text`, or -1.
  int32_t find(std::string_view text) const {
    return const_cast<TextSlots*>(this)->probe(text, hash(text))->number;
  }

  size_t size() const { return count_; }

 private:
  struct Slot {
    std::string_view text;
    uint32_t hash = 0;
    int32_t number = -1;
  };

  static uint32_t hash(std::string_view s) {
    uint64_t h = 14695981039346656037ull;
    for (unsigned char c : s) h = (h ^ c) * 1099511628211ull;
    return static_cast<uint32_t>(h ^ (h >> 29));
  }

  // Codes and identifiers are a few bytes long: a loop beats a call.
  static bool same(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }

  // The slot holding `text` (whose hash is h), or the free slot where it
  // belongs.
  Slot* probe(std::string_view text, uint32_t h) {
    const size_t mask = slots_.size() - 1;
    for (size_t i = h & mask;; i = (i + 1) & mask) {
      Slot& s = slots_[i];
      if (s.number < 0 || (s.hash == h && same(s.text, text))) return &s;
    }
  }

  // At least twice `expected` slots, a power of two; the entries kept.
  void rehash(size_t expected) {
    size_t size = 16;
    while (size < expected * 2) size *= 2;
    std::vector<Slot> old;
    old.swap(slots_);
    slots_.assign(size, Slot{});
    for (const Slot& s : old) {
      if (s.number >= 0) *probe(s.text, s.hash) = s;
    }
  }

  std::vector<Slot> slots_;
  size_t count_ = 0;
};

}  // namespace orvalis::reports::hesa
