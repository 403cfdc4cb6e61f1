#include "component/errors/debug_log.h"

#include "component/errors/error_handling.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "runtime/text_file.h"
#include "runtime/work_folder.h"

namespace orvalis {

namespace {
constexpr const char* kModule = "HRGlobalFunctions";
DebugLogSource* installedSource = nullptr;
}  // namespace

void setDebugLogSource(DebugLogSource* source) { installedSource = source; }

bool debugLogEnabled() { return installedSource != nullptr && installedSource->traceOn(); }

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
      file = installedSource->logFile();
      if (file.empty()) {
        file = withTrailingSlash(workFolder().string()) + "General.Debug-" +
               formatDate(clock::now(), "YYMMDD") + ".txt";
        installedSource->setLogFile(file);
      }
    });
    step(3, [&] { appendLine(file, formatDate(clock::now(), "HH:MM:SS") + " " + text); });
  });
}

}  // namespace orvalis
