// Helpers the fuzz targets share: the input bytes cut into the fields a
// target feeds its parser, and the check that stops a run on a broken
// promise (libFuzzer reports the abort with the input that caused it).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace orvalis::fuzz {

// The first `count - 1` lines of the input and then the rest (which may
// hold further line breaks); missing fields are empty.
inline std::vector<std::string> lines(const uint8_t* data, size_t size, size_t count) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> out;
  while (out.size() + 1 < count) {
    size_t nl = text.find('\n');
    if (nl == std::string_view::npos) break;
    out.emplace_back(text.substr(0, nl));
    text.remove_prefix(nl + 1);
  }
  out.emplace_back(text);
  out.resize(count);
  return out;
}

// Fails the run with a message when a promise of the parser does not hold.
inline void check(bool ok, const char* what, std::string_view input) {
  if (ok) return;
  std::fprintf(stderr, "broken promise: %s\ninput: [%.*s]\n", what, static_cast<int>(input.size()), input.data());
  std::abort();
}

}  // namespace orvalis::fuzz
