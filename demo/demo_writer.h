// DemoWriter: how the demo generator writes its rows.
//
// Each table goes through Connection::bulkInsert (prepared statements on
// SQLite, COPY on PostgreSQL); the writer counts the rows per table for the
// summary and reports progress as rows go by. Row helps a fill function put
// its values in column order. The value helpers turn the model's day
// numbers and optional texts into database values (Null for "none").
//
// Used by one thread; borrows the connection and the report.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "data/drivers/connection.h"
#include "runtime/date_time.h"
#include "runtime/value.h"
#include "demo/demo_database.h"
#include "demo/demo_model.h"

namespace orvalis::demo {

class Row {
 public:
  explicit Row(std::vector<Value>& values) : values_(values) {}
  Row& operator<<(Value v) {
    values_[next_++] = std::move(v);
    return *this;
  }

 private:
  std::vector<Value>& values_;
  size_t next_ = 0;
};

class Writer {
 public:
  Writer(Connection& connection, DemoReport& report, std::function<void(long rows, const std::string& table)> onRows)
      : connection_(connection), report_(report), onRows_(std::move(onRows)) {}

  // Writes count rows; fill(i, row) puts the values of row i.
  void rows(const std::string& table, const std::vector<std::string>& columns, size_t count,
            const std::function<void(size_t, Row&)>& fill);

  // Writes rows while next(row) returns true.
  void stream(const std::string& table, const std::vector<std::string>& columns,
              const std::function<bool(Row&)>& next);

 private:
  Connection& connection_;
  DemoReport& report_;
  std::function<void(long, const std::string&)> onRows_;
};

// A day as a date value; Null for "none" (negative or open).
inline Value dateValue(int64_t day) {
  if (day < 0 || day == kOpen) return Value::null();
  return Value(DateTime::fromDays(day));
}

// A text, or Null when empty.
inline Value optional(std::string_view text) { return text.empty() ? Value::null() : Value(text); }

// A whole number, or Null when zero.
inline Value optionalNumber(long n) { return n == 0 ? Value::null() : Value(n); }

// Rounds to cents / hundredths.
inline double round2(double x) { return static_cast<double>(static_cast<long long>(x * 100.0 + (x < 0 ? -0.5 : 0.5))) / 100.0; }

}  // namespace orvalis::demo
