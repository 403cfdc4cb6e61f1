#include "component/ttx_file.h"

#include <vector>

#include "component/errors/error_handling.h"
#include "data/control.h"
#include "data/dialect_functions.h"
#include "runtime/basic_string.h"
#include "runtime/text_file.h"
#include "runtime/value.h"
#include "runtime/work_folder.h"

namespace orvalis {

namespace {
constexpr std::string_view kCrLf = "\r\n";
}  // namespace

std::string ttxLine(const FieldDef& field, Dialect dialect) {
  const std::string name = upperTrim(field.name);
  std::string letter = std::to_string(field.type);
  std::string decimals;
  gsubFieldTypeLetter(letter, decimals, dialect);
  if (letter == "D" && name.find("TIME") != std::string::npos) letter = "T";

  std::string size = trim(std::to_string(field.definedSize));
  // The size is also held as a 16-bit integer (CInt: sizes beyond 32767
  // overflow, as they always did).
  long number = Value(size).toInteger();
  if (letter == "S" && number < 0) {
    size = "80";
    number = 80;
  }

  std::string word = letter;
  std::string sample;
  if (letter == "S") {
    word = "String";
    if (number < 100) sample = repeat(number, 'A');
  } else if (letter == "D") {
    word = "Date";
    size = "12";
  } else if (letter == "T") {
    if (isSqlServerFamily(dialect)) {
      word = "DateTimeString";
      size = "20";
    } else {
      word = "Time";
      size = "8";
    }
  } else if (letter == "N") {
    word = "Number";
    size = "15";
  }
  return name + "\t" + word + "\t" + size + "\t" + sample;
}

std::string ttxText(const Recordset& rs, Dialect dialect) {
  std::vector<std::string> lines;
  lines.reserve(static_cast<size_t>(rs.fieldCount()));
  for (int i = 0; i < rs.fieldCount(); ++i) lines.push_back(ttxLine(rs.field(i), dialect));
  return join(lines, kCrLf);
}

std::string defaultTtxFileName() {
  std::string folder = trim(gfncGetSetting("GRIDLOC", true));
  if (folder.empty()) folder = workFolder().string();
  return withTrailingSlash(folder) + "REPORT.ttx";
}

void gsubWriteTTX(const Recordset* rsData, const std::string& fileName, bool checkSetting) {
  std::string file;
  Procedure proc(Handler::ErrorComponent, componentNames().payroll, "HRDataFunctions", "gsubWriteTTX");
  proc.variables([&] { return Dump().item("STRFILENAME:", file).text(); });
  proc.run([&](Steps& step) {
    // A failed reading of the switch counts as "off".
    bool wanted = !checkSetting;
    if (checkSetting) {
      step(1, [&] { wanted = left(upperTrim(gfncGetSetting("GENTTX", true)), 1) == "Y"; });
    }
    if (!wanted) return;
    step(2, [&] {
      file = trim(fileName);
      if (file.empty()) file = defaultTtxFileName();
    });
    step(3, [&] { createTextFile(file); });
    if (rsData == nullptr) return;
    std::string text;
    step(4, [&] { text = ttxText(*rsData, currentDialect()); });
    step(5, [&] { appendText(file, text); });
  });
}

}  // namespace orvalis
