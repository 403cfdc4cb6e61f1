// Keyed texts ("KEY=value" entries, one a line) as procedures and forms hand
// them over. Input: a key line, a value line, then the text.
#include "fuzz_input.h"
#include "runtime/basic_string.h"
#include "runtime/keyed_text.h"

using namespace orvalis;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto f = fuzz::lines(data, size, 3);
  const std::string& key = f[0];
  const std::string& value = f[1];
  std::string text = f[2];

  for (const auto& [k, v] : keyedEntries(text)) {
    fuzz::check(hasKey(text, k), "every listed entry's key is found", text);
  }
  (void)getKeyedValue(text, key);

  // A usable key: no "=" or line break and something left after trimming.
  const std::string cleanKey = trim(key);
  const bool usable = !cleanKey.empty() && cleanKey.find_first_of("=\r\n") == std::string::npos &&
                      cleanKey.find('\0') == std::string::npos;
  std::string edited = text;
  setKeyedValue(edited, key, value);
  if (usable) {
    fuzz::check(hasKey(edited, key), "a key just set is found", edited);
    std::string flat = value;
    for (char& c : flat) {
      if (c == '\r' || c == '\n') c = ' ';
    }
    fuzz::check(getKeyedValue(edited, key) == trim(flat), "a value just set reads back", edited);
    removeKey(edited, key);
    fuzz::check(!hasKey(edited, key), "a removed key is gone", edited);
  }
  return 0;
}
