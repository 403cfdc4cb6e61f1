// Value: the Basic Variant the component's logic was written against.
//
// A Value is Empty, Null, Boolean, Integer (64-bit storage; the 16- and
// 32-bit Basic conversions check their own ranges), Double, Text or Date.
// The conversions follow the Basic rules the report logic depends on:
//   - text() reads a value "as text" the way the original concatenated it
//     with "": Empty and Null give "", True/False give "True"/"False",
//     doubles print with up to 15 significant digits, dates in the house
//     format "DD/MM/YYYY" (plus " HH:MM:SS" when they carry a time; a
//     value on day 0, 30/12/1899, reads as its time alone, "HH:MM:SS").
//   - toBool(), toDouble(), toInteger(), toLong(), toDate() are CBool, CDbl,
//     CInt, CLng and CDate: they raise "Type mismatch" (13) for text that is
//     not of the kind asked for, "Invalid use of Null" (94) for Null, and
//     "Overflow" (6) outside the target range. CInt and CLng round halves to
//     even as Basic does.
// Plain value type; thread-compatible.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "runtime/date_time.h"

namespace orvalis {

class Value {
 public:
  enum class Kind { Empty, Null, Boolean, Integer, Double, Text, Date };

  Value() = default;
  static Value null();
  Value(bool b) : v_(b) {}
  Value(int i) : v_(static_cast<int64_t>(i)) {}
  Value(long i) : v_(static_cast<int64_t>(i)) {}
  Value(long long i) : v_(static_cast<int64_t>(i)) {}
  Value(double d) : v_(d) {}
  Value(std::string s) : v_(std::move(s)) {}
  Value(std::string_view s) : v_(std::string(s)) {}
  Value(const char* s) : v_(std::string(s)) {}
  Value(DateTime d) : v_(d) {}

  Kind kind() const { return static_cast<Kind>(v_.index()); }
  bool isEmpty() const { return kind() == Kind::Empty; }
  bool isNull() const { return kind() == Kind::Null; }
  bool isText() const { return kind() == Kind::Text; }
  bool isDate() const { return kind() == Kind::Date; }
  bool isNumber() const { return kind() == Kind::Integer || kind() == Kind::Double; }

  // Direct access; only valid for the matching kind.
  const std::string& asText() const { return std::get<std::string>(v_); }
  int64_t asInteger() const { return std::get<int64_t>(v_); }
  double asDouble() const { return std::get<double>(v_); }
  bool asBool() const { return std::get<bool>(v_); }
  DateTime asDate() const { return std::get<DateTime>(v_); }

  // "As text" (value & ""): never fails; Null and Empty read as "".
  std::string text() const;
  // CStr: as text(), but Null raises "Invalid use of Null".
  std::string toText() const;
  bool toBool() const;
  double toDouble() const;
  int16_t toInteger() const;  // CInt
  int32_t toLong() const;     // CLng
  DateTime toDate() const;    // CDate (text read day first)

  // The name Basic's TypeName would give ("Empty", "Null", "String", ...).
  const char* typeName() const;

  bool operator==(const Value& other) const { return v_ == other.v_; }

 private:
  struct NullTag {
    bool operator==(const NullTag&) const { return true; }
  };
  using Storage = std::variant<std::monostate, NullTag, bool, int64_t, double, std::string, DateTime>;
  explicit Value(Storage s) : v_(std::move(s)) {}
  Storage v_;
};

// Basic's text for a double: up to 15 significant digits, no trailing zeros,
// "E+nn"/"E-nn" for very large or small magnitudes.
std::string numberText(double d);

}  // namespace orvalis
