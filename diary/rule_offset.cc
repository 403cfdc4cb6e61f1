#include "diary/rule_offset.h"

#include <cctype>

#include "runtime/basic_date.h"

namespace orvalis::diary {

std::optional<DateTime> ruleOffsetDate(DateTime base, long number, std::string_view unit) {
  size_t i = 0;
  while (i < unit.size() && std::isspace(static_cast<unsigned char>(unit[i]))) ++i;
  if (i == unit.size()) return std::nullopt;
  const DateTime day = base.datePart();
  switch (std::toupper(static_cast<unsigned char>(unit[i]))) {
    case 'D': return day.addDays(number);
    case 'W': return day.addDays(7 * static_cast<int64_t>(number));
    case 'M': return dateAdd("m", static_cast<double>(number), day);
    case 'Y': return dateAdd("yyyy", static_cast<double>(number), day);
    default: return std::nullopt;
  }
}

}  // namespace orvalis::diary
