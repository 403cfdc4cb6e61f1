// Dates typed day first, as IsDate and CDate read them, and times.
#include "fuzz_input.h"
#include "runtime/basic_date.h"
#include "runtime/error.h"
#include "runtime/value.h"

using namespace orvalis;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::optional<DateTime> d = parseDate(text);
  fuzz::check(isDate(Value(text)) == d.has_value(), "IsDate agrees with the date reader", text);
  (void)parseTime(text);
  try {
    DateTime c = Value(text).toDate();
    if (d) fuzz::check(c == *d, "CDate reads a date text as the date reader does", text);
  } catch (const Error&) {
    // Type mismatch or overflow: what CDate raises for such a text.
  }
  if (d && d->year() >= 1000) {
    // A date read back from the house format is the same day.
    const std::string house = formatDate(*d, "DD/MM/YYYY");
    const std::optional<DateTime> again = parseDate(house);
    fuzz::check(again.has_value(), "a date in the house format reads back", text);
    fuzz::check(formatDate(*again, "DD/MM/YYYY") == house, "a date in the house format reads back as the same day",
                text);
  }
  return 0;
}
