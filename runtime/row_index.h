// RowIndex: a hash index over one or more key columns of a recordset.
//
// Built once from a Recordset and then probed; it holds its own copy of the
// keys and storage row numbers, not a reference to the recordset. Immutable
// after construction, so concurrent probes are safe.
#pragma once

#include <cstddef>
#include <cstdint>
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
  size_t size() const { return integerKeys_ ? integers_.size() : rows_.size(); }

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

  std::unordered_map<std::string, std::vector<long>, NoCaseHash, NoCaseEqual> rows_;
  // With integer keys, these instead of rows_.
  bool integerKeys_ = false;
  std::unordered_map<int64_t, std::vector<long>> integers_;
};

}  // namespace orvalis
