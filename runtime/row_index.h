// RowIndex: a hash index over one or more key columns of a recordset.
//
// Built once from a Recordset and then probed; it holds its own copy of the
// keys and storage row numbers, not a reference to the recordset. Immutable
// after construction, so concurrent probes are safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvalis {

class Recordset;

// A hash index over one or more key columns of a recordset, built once and
// then probed: the portable form of the original's "filter the recordset by
// code" lookups. Keys compare as the trimmed text of the values joined by
// '\x1f', without regard to case (as the ADO filter they replace did). The
// index refers to storage rows and skips deleted ones; it does not follow
// later edits. Probing with a single key does not allocate. When every key
// is an integer in its plain decimal form (the usual sequence ids) the index
// holds numbers instead of texts: the same answers, found faster.
class RowIndex {
 public:
  RowIndex() = default;
  RowIndex(const Recordset& rs, const std::vector<std::string>& keyFields);

  // Storage rows with this key, in storage order (empty when none).
  const std::vector<long>& find(std::string_view key) const;
  const std::vector<long>& find(const std::vector<std::string>& keyParts) const;
  // First row with this key, or -1.
  long first(std::string_view key) const;
  // first() of the key in a cell of another recordset, without a copy.
  long first(const Recordset& rs, long row, int index) const;
  size_t size() const { return integerKeys_ ? integerCount_ : rows_.size(); }

  static std::string makeKey(const std::vector<std::string>& parts);

 private:
  // Case-blind hashing and equality, usable with std::string_view probes.
  struct NoCaseHash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const;
  };
  struct NoCaseEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
  };
  static std::optional<int64_t> integerKey(const Recordset& rs, long row, int index, std::string& scratch);

  // With integer keys: each key's first and last row in one open-addressing
  // table (at most half full), the later rows of a key chained through
  // next_ (by row), so that a build allocates nothing per key. The lists
  // find() answers with are made on its first call (shared by copies).
  struct IntegerSlot {
    int64_t key = 0;
    long first = -1;  // -1: a free slot
    long last = -1;
  };
  struct IntegerLists;
  const IntegerSlot& probe(int64_t key) const;
  void insert(int64_t key, long row);
  void growSlots();
  const std::vector<long>& integerRows(int64_t key) const;

  std::unordered_map<std::string, std::vector<long>, NoCaseHash, NoCaseEqual> rows_;
  bool integerKeys_ = false;
  std::vector<IntegerSlot> slots_;
  int shift_ = 64;  // 64 - log2(slots_.size())
  size_t integerCount_ = 0;
  std::vector<long> next_;
  std::shared_ptr<IntegerLists> lists_;
};

}  // namespace orvalis
