#include "query/condition_group.h"

#include <cctype>

#include "runtime/error.h"

namespace orvalis {

namespace {

bool isWordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '$' || c == '.'; }

bool isOrAt(const std::string& s, size_t i) {
  if (i + 2 > s.size()) return false;
  if (std::toupper(static_cast<unsigned char>(s[i])) != 'O' || std::toupper(static_cast<unsigned char>(s[i + 1])) != 'R')
    return false;
  const bool before = i == 0 || !isWordChar(s[i - 1]);
  const bool after = i + 2 == s.size() || !isWordChar(s[i + 2]);
  return before && after;
}

}  // namespace

ConditionShape conditionShape(const std::string& condition) {
  const std::string& s = condition;
  bool needsGroup = false;
  int depth = 0;
  char quote = 0;
  for (size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    if (quote) {
      // A doubled quote inside quoted text closes and reopens it: the same.
      if (c == quote) quote = 0;
      continue;
    }
    if (c == '\'' || c == '"') {
      quote = c;
    } else if (c == '(') {
      ++depth;
    } else if (c == ')') {
      if (--depth < 0) return ConditionShape::Unbalanced;
    } else if ((c == '-' && i + 1 < s.size() && s[i + 1] == '-') || (c == '/' && i + 1 < s.size() && s[i + 1] == '*')) {
      // A comment would swallow what is joined after it; inside brackets
      // it swallows the closing bracket and the statement fails.
      needsGroup = true;
    } else if (depth == 0 && isOrAt(s, i)) {
      needsGroup = true;
    }
  }
  if (quote || depth != 0) return ConditionShape::Unbalanced;
  return needsGroup ? ConditionShape::NeedsGroup : ConditionShape::Plain;
}

std::string asOneGroup(const std::string& condition, const std::string& what) {
  switch (conditionShape(condition)) {
    case ConditionShape::Plain:
      return condition;
    case ConditionShape::NeedsGroup:
      return "(" + condition + ")";
    case ConditionShape::Unbalanced:
      break;
  }
  throw Error(err::kInvalidProcedureCall, "HRSQLControl",
              "The condition of " + what + " has unbalanced brackets or quotes: " + condition);
}

}  // namespace orvalis
