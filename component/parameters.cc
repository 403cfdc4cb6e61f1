#include "component/parameters.h"

#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

const Value& Parameters::at(long index) const {
  if (index < 0 || index >= size()) {
    throw Error(err::kSubscriptOutOfRange, "ORVALIS", "Subscript out of range");
  }
  return elements_[static_cast<size_t>(index)];
}

std::string Parameters::text(long index) const { return at(index).toText(); }

bool Parameters::flag(long index) const { return at(index).toBool(); }

long Parameters::findNamed(std::string_view name) const {
  const std::string wanted = upperTrim(name);
  for (long i = 0; i < size(); ++i) {
    const std::string element = elements_[static_cast<size_t>(i)].text();
    const size_t eq = element.find('=');
    if (eq == std::string::npos) continue;
    if (upperTrim(std::string_view(element).substr(0, eq)) == wanted) return i;
  }
  return -1;
}

std::string Parameters::named(std::string_view name) const {
  const long i = findNamed(name);
  if (i < 0) return "";
  const std::string element = elements_[static_cast<size_t>(i)].text();
  return element.substr(element.find('=') + 1);
}

bool Parameters::hasNamed(std::string_view name) const { return findNamed(name) >= 0; }

std::string Parameters::describe() const {
  std::vector<std::string> items;
  items.reserve(elements_.size());
  for (const Value& v : elements_) items.push_back(v.text());
  return join(items, ", ");
}

}  // namespace orvalis
