#include "query/sql_identifiers.h"

#include <cctype>

namespace orvalis {

bool isIdentifier(std::string_view name) {
  if (name.empty() || std::isdigit(static_cast<unsigned char>(name.front()))) return false;
  for (char c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != '$') return false;
  }
  return true;
}

bool isFieldName(std::string_view name) {
  size_t dot = name.find('.');
  if (dot == std::string_view::npos) return false;
  return isIdentifier(name.substr(0, dot)) && isIdentifier(name.substr(dot + 1));
}

bool isOperatorText(std::string_view op) {
  if (op.empty()) return false;
  bool symbols = true;
  bool words = true;
  for (char c : op) {
    if (c != '<' && c != '>' && c != '=' && c != '!') symbols = false;
    if (!std::isalpha(static_cast<unsigned char>(c)) && c != ' ') words = false;
  }
  return symbols || words;
}

}  // namespace orvalis
