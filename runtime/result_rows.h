// Result rows handed over one at a time.
//
// What reads a statement's rows (a driver) and what writes them out (the
// command line's CSV and JSON) meet here, so that a large result can go
// from the statement to its output without being held in a Recordset. A
// filled Recordset can be sent through the same interface (sendRows), so
// that one writer serves both ways and writes the same bytes.
//
// A ResultSink receives start(fields) once, then row() for each row in
// order. The cells read through ResultRow are those a Recordset with these
// fields would hold after the same values were written to it (converted to
// the field's type: a blank text in a number field reads Null), and are
// valid only during the row() call. A reader that retries a statement
// elsewhere after a failure calls start() again: the sink forgets any rows
// it had.
//
// Interfaces and a free function; one thread at a time.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "runtime/recordset.h"
#include "runtime/value.h"

namespace orvalis {

class ResultRow {
 public:
  // The cell's text as Recordset::textViewAt gives it: a text cell's bytes
  // in place, any other cell's text in `scratch`; "" for Null.
  virtual std::string_view text(int index, std::string& scratch) const = 0;
  // The cell as Recordset::at gives it.
  virtual Value value(int index) const = 0;

 protected:
  ~ResultRow() = default;
};

class ResultSink {
 public:
  virtual void start(const std::vector<FieldDef>& fields) = 0;
  virtual void row(const ResultRow& row) = 0;

 protected:
  ~ResultSink() = default;
};

// Sends the recordset's fields and the rows its cursor would visit (its
// filter and sort apply; the caller's cursor stays put).
void sendRows(const Recordset& rs, ResultSink& sink);

}  // namespace orvalis
