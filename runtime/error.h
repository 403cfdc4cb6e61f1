// Run-time errors.
//
// Every failure in the component travels as an orvalis::Error: a number, a
// source and a description, as the errors of the original Basic run time did.
// The number keeps the Basic meaning where one exists (6 overflow, 13 type
// mismatch, 9 subscript out of range, ...); database failures use kDatabase.
// Errors are plain values: copyable, thread-compatible.
#pragma once

#include <stdexcept>
#include <string>

namespace orvalis {

namespace err {
inline constexpr long kInvalidProcedureCall = 5;
inline constexpr long kOverflow = 6;
inline constexpr long kSubscriptOutOfRange = 9;
inline constexpr long kDivisionByZero = 11;
inline constexpr long kTypeMismatch = 13;
inline constexpr long kFileNotFound = 53;
inline constexpr long kPathFileAccess = 75;
inline constexpr long kPathNotFound = 76;
inline constexpr long kObjectRequired = 424;
inline constexpr long kObjectVariableNotSet = 91;
inline constexpr long kInvalidUseOfNull = 94;
inline constexpr long kClassNotRegistered = 429;
// ADO's "unspecified error" from a provider (E_FAIL as a signed long).
inline constexpr long kDatabase = -2147467259;
// ADO: item cannot be found in the collection (unknown field name).
inline constexpr long kItemNotFound = 3265;
// ADO: operation not allowed when the object is closed.
inline constexpr long kObjectClosed = 3704;
// ADO: either BOF or EOF is true, or the current record has been deleted.
inline constexpr long kNoCurrentRecord = 3021;
// ADO: arguments of the wrong type or out of range (a bad Filter or Sort).
inline constexpr long kInvalidArgument = 3001;
// ADO: "Multiple-step operation generated errors" (a value a field cannot
// hold), DB_E_ERRORSOCCURRED as a signed long.
inline constexpr long kMultipleStep = -2147217887;
}  // namespace err

class Error : public std::runtime_error {
 public:
  Error(long number, std::string source, std::string description)
      : std::runtime_error(description),
        number_(number),
        source_(std::move(source)),
        description_(std::move(description)) {}

  long number() const { return number_; }
  const std::string& source() const { return source_; }
  const std::string& description() const { return description_; }

 private:
  long number_;
  std::string source_;
  std::string description_;
};

// The standard Basic texts for the numbers above.
[[noreturn]] void raiseOverflow(const std::string& source = "ORVALIS");
[[noreturn]] void raiseTypeMismatch(const std::string& source = "ORVALIS");

}  // namespace orvalis
