// Parameters: the variant array a report's ExtractData receives.
//
// The host passes a one-dimensional array of Values. Most reports read it by
// fixed index (at(), text(), flag()); a missing element raises "Subscript
// out of range" (9), which the report's error handler reports. Some reports
// read it by name instead: an element "NAME=value" is found by its name,
// compared trimmed and upper-cased, and named() returns the text after the
// first "=" exactly as it stands (callers trim as their report says).
//
// A plain value type; thread-compatible.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/value.h"

namespace orvalis {

class Parameters {
 public:
  Parameters() = default;
  explicit Parameters(std::vector<Value> elements) : elements_(std::move(elements)) {}
  Parameters(std::initializer_list<Value> elements) : elements_(elements) {}

  long size() const { return static_cast<long>(elements_.size()); }
  const std::vector<Value>& elements() const { return elements_; }

  // Element `index`; raises "Subscript out of range" (9) when it is missing.
  const Value& at(long index) const;
  // The element read into a text variable (CStr: Null raises 94).
  std::string text(long index) const;
  // The element read into a Boolean variable (CBool).
  bool flag(long index) const;

  // The value of the first "NAME=value" element whose name matches; "" when
  // no element has that name.
  std::string named(std::string_view name) const;
  bool hasNamed(std::string_view name) const;

  // The elements as text joined by ", " (trace lines and error dumps).
  std::string describe() const;

 private:
  // Index of the first element named `name`, or -1.
  long findNamed(std::string_view name) const;

  std::vector<Value> elements_;
};

}  // namespace orvalis
