// Hashing that lets a map keyed by std::string be probed with a
// std::string_view, so lookups in per-row loops need no copy of the key:
//   std::unordered_map<std::string, T, TextHash, std::equal_to<>>
// Not noexcept, so that the maps keep each key's hash instead of hashing
// again while they search. Stateless; thread-safe.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace orvalis::reports {

struct TextHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
};

}  // namespace orvalis::reports
