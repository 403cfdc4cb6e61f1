// DemoWriter: how the demo generator writes its rows.
//
// The generator runs on a thread of its own; its rows go in batches to the
// connection's thread, which writes each table through
// Connection::bulkLoad (statements of many rows on SQLite, COPY on
// PostgreSQL), counts the rows per table for the summary and reports
// progress as rows go by. Row helps a fill function put
// its values in column order; texts go to the driver as they are, without a
// Value. The value helpers turn the model's day
// numbers and optional texts into database values (Null for "none").
//
// A Writer is used by the generator's thread only.
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
  explicit Row(BulkRow& out) : out_(out) {}
  Row& operator<<(const Value& v) {
    out_.value(v);
    return *this;
  }
  Row& operator<<(const char* text) {
    out_.text(text);
    return *this;
  }
  Row& operator<<(const std::string& text) {
    out_.text(text);
    return *this;
  }
  Row& operator<<(std::string_view text) {
    out_.text(text);
    return *this;
  }

 private:
  BulkRow& out_;
};

class RowPipe;  // demo_database.cc

// Hands the generator's rows to the loader on the connection's thread.
class Writer {
 public:
  explicit Writer(RowPipe& pipe) : pipe_(pipe) {}

  // Writes count rows; fill(i, row) puts the values of row i.
  void rows(const std::string& table, const std::vector<std::string>& columns, size_t count,
            const std::function<void(size_t, Row&)>& fill);

  // Writes rows while next(row) returns true.
  void stream(const std::string& table, const std::vector<std::string>& columns,
              const std::function<bool(Row&)>& next);

 private:
  RowPipe& pipe_;
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
