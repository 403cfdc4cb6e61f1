#include "diary/dates_list.h"

#include "data/hr_environment.h"

namespace orvalis {

void clearDatesList() { HREnvironment::session().SetGlobalVariable(kDatesListVariable, Value("")); }

std::string datesListText() { return HREnvironment::session().GlobalVariable(kDatesListVariable).text(); }

bool datesListHolds(std::string_view key) {
  if (key.empty()) return false;
  return datesListText().find(key) != std::string::npos;
}

void addToDatesList(std::string_view entry) {
  HRSession& session = HREnvironment::session();
  std::string list = session.GlobalVariable(kDatesListVariable).text();
  if (!list.empty()) list += kDatesListSeparator;
  list += entry;
  session.SetGlobalVariable(kDatesListVariable, Value(std::move(list)));
}

}  // namespace orvalis
