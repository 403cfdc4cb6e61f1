// CodeSet: the valid codes of one column, probed once per checked cell.
//
// Codes are a few characters long. A code of up to 7 bytes is packed with
// its length into one 64-bit key and kept in a small open-addressing table
// of keys, so that a probe is a multiply and an integer compare; every
// code is also kept in a TextSlots (views into the texts, which must
// outlive the set) for the probes the packed table cannot answer: a longer
// text, or one with a lower-case letter (codes are filed upper-cased, so
// such a text is upper-cased first). Immutable once filled.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "reports/sir_he/text_slots.h"

namespace orvalis::reports::hesa {

class CodeSet {
 public:
  explicit CodeSet(size_t expected = 0) : texts_(expected) {
    size_t size = 16;
    while (size < expected * 2) size *= 2;
    keys_.assign(size, 0);
    shift_ = 64 - static_cast<unsigned>(__builtin_ctzll(size));
  }

  // Files a code as the set compares it (trimmed, upper case).
  void insert(std::string_view code) {
    if (!texts_.insert(code, 1)) return;
    uint64_t key = 0;
    if (!packed(code, key)) return;
    if ((packedCount_ + 1) * 2 > keys_.size()) grow();
    keys_[slotOf(key)] = key;
    ++packedCount_;
  }

  // Whether `code`, trimmed of blanks, is in the set, compared upper-cased.
  // `upperCased` is where an upper-cased copy goes when one is needed.
  bool contains(std::string_view code, std::string& upperCased) const {
    uint64_t key = 0;
    if (packed(code, key)) return keys_[slotOf(key)] == key;
    for (char c : code) {
      if (c >= 'a' && c <= 'z') {
        upperCased.assign(code);
        for (char& u : upperCased) {
          if (u >= 'a' && u <= 'z') u = static_cast<char>(u - 'a' + 'A');
        }
        return texts_.find(upperCased) >= 0;
      }
    }
    return texts_.find(code) >= 0;
  }

  size_t size() const { return texts_.size(); }

 private:
  // The key of a text of 1 to 7 bytes without a lower-case letter: its
  // bytes, then its length in the top byte.
  static bool packed(std::string_view s, uint64_t& key) {
    if (s.empty() || s.size() > 7) return false;
    uint64_t k = static_cast<uint64_t>(s.size()) << 56;
    for (size_t i = 0; i < s.size(); ++i) {
      const unsigned char c = static_cast<unsigned char>(s[i]);
      if (c >= 'a' && c <= 'z') return false;
      k |= static_cast<uint64_t>(c) << (8 * i);
    }
    key = k;
    return true;
  }

  // The slot holding key, or the empty slot where it belongs.
  size_t slotOf(uint64_t key) const {
    const size_t mask = keys_.size() - 1;
    for (size_t i = static_cast<size_t>((key * 0x9E3779B97F4A7C15ull) >> shift_);; i = (i + 1) & mask) {
      if (keys_[i] == key || keys_[i] == 0) return i;
    }
  }

  void grow() {
    std::vector<uint64_t> old;
    old.swap(keys_);
    keys_.assign(old.size() * 2, 0);
    shift_ = 64 - static_cast<unsigned>(__builtin_ctzll(keys_.size()));
    for (uint64_t k : old) {
      if (k != 0) keys_[slotOf(k)] = k;
    }
  }

  TextSlots texts_;
  std::vector<uint64_t> keys_;
  unsigned shift_ = 60;
  size_t packedCount_ = 0;
};

}  // namespace orvalis::reports::hesa
