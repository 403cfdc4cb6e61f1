#include "component/debug_log.h"

#include "component/error_handling.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "runtime/text_file.h"
#include "runtime/work_folder.h"

namespace orvalis {

namespace {
constexpr const char* kModule = "HRGlobalFunctions";
}  // namespace

bool debugLogEnabled() {
  HRSession& session = HREnvironment::session();
  std::string cached = session.GlobalVariable("DEBUG").text();
  if (cached.empty()) {
    const std::string value = upperTrim(gfncGetControlValue("", "VAR", "DEBUG"));
    cached = value == "YES" ? "YES" : "NO";
    session.SetGlobalVariable("DEBUG", Value(cached));
  }
  return cached == "YES";
}

void gsubDebugLog(const std::string& source, const std::string& text, const std::string& extra) {
  std::string file;
  Procedure proc(Handler::ErrorComponent, componentNames().payroll, kModule, "gsubDebugLog");
  proc.variables([&] {
    return Dump()
        .item("STRSOURCE:", source)
        .item("STRTEXT:", text)
        .item("STREXTRA:", extra)
        .item("STRFILE:", file)
        .text();
  });
  proc.run([&](Steps& step) {
    bool enabled = false;
    step(1, [&] { enabled = debugLogEnabled(); });
    if (!enabled) return;
    step(2, [&] {
      file = gfncGetControlValue("", "VAR", "DEBUGFILE");
      if (file.empty()) {
        file = withTrailingSlash(workFolder().string()) + "General.Debug-" +
               formatDate(clock::now(), "YYMMDD") + ".txt";
        gsubSetControlValue("", "VAR", "DEBUGFILE", file);
      }
    });
    step(3, [&] { appendLine(file, formatDate(clock::now(), "HH:MM:SS") + " " + text); });
  });
}

}  // namespace orvalis
