// The settings file (INI text). Input: a name line, then the file's text.
#include "fuzz_input.h"
#include "runtime/settings_file.h"

using namespace orvalis;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto f = fuzz::lines(data, size, 2);
  SettingsFile settings = SettingsFile::parse(f[1]);
  (void)settings.get(f[0]);
  (void)settings.get(f[0], f[0]);
  // The whole input as a file too (byte-order marks, CR LF, no name line).
  SettingsFile whole = SettingsFile::parse(std::string_view(reinterpret_cast<const char*>(data), size));
  (void)whole.get("GRIDLOC");
  return 0;
}
