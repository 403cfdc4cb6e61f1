#include "data/debug_log_source.h"

#include "data/control.h"
#include "data/hr_environment.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

class SessionDebugLogSource final : public DebugLogSource {
 public:
  bool traceOn() override {
    HRSession& session = HREnvironment::session();
    std::string cached = session.GlobalVariable("DEBUG").text();
    if (cached.empty()) {
      const std::string value = upperTrim(gfncGetControlValue("", "VAR", "DEBUG"));
      cached = value == "YES" ? "YES" : "NO";
      session.SetGlobalVariable("DEBUG", Value(cached));
    }
    return cached == "YES";
  }
  std::string logFile() override { return gfncGetControlValue("", "VAR", "DEBUGFILE"); }
  void setLogFile(const std::string& file) override { gsubSetControlValue("", "VAR", "DEBUGFILE", file); }
};

}  // namespace

DebugLogSource& dataDebugLogSource() {
  static SessionDebugLogSource source;
  return source;
}

}  // namespace orvalis
