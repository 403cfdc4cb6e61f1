// Recordset: the in-memory, disconnected rowset every extract returns.
//
// It stands in for a client-side ADO recordset: fields are appended with a
// name, an ADO type number, a defined size and attributes; rows are added
// with addNew() and read through a cursor (moveFirst/moveNext/eof/bof) or by
// row number. A filter and a sort change which rows the cursor visits and in
// what order, never the rows themselves. Field names are matched without
// regard to case, as ADO does.
//
// Values written to a field are converted to the field's type as ADO does
// (a number written to a text field is stored as its text, a date text
// written to a date field as a date); a value that cannot be converted
// raises ADO's "Multiple-step operation generated errors" (-2147217887). A
// blank text written to a number, date or Boolean field stores Null.
//
// Cursor: after open() and after a filter or sort is set the cursor is on the
// first visible row; with no rows BOF and EOF are both true. moveNext at EOF
// and movePrevious at BOF raise 3021 as ADO does; moveFirst and moveLast on
// an empty recordset leave it at BOF/EOF.
//
// addNew() makes the new row current, so whoever fills a recordset calls
// moveFirst() before handing it on (the drivers do).
//
// Storage (runtime/recordset_cells.h): cells are held row by row, each at
// the width of the field's type (4 bytes a Long, 8 a Double or a date, 8 a
// text plus its bytes in a per-recordset text arena), with a presence bit a
// cell for Null; space of overwritten texts is reclaimed once it is half the
// arena. Rows are held in chunks of 1024, so a large recordset never holds
// more than one partly used chunk: 100 000 x 30 mixed cells take about 12
// bytes a cell, 1.3 times the raw bytes of their values.
//
// A Recordset owns its rows. It is movable and copyable (a copy is a
// snapshot), and thread-compatible: one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/ado.h"
#include "runtime/row_index.h"
#include "runtime/value.h"

namespace orvalis {

struct FieldDef {
  std::string name;
  int type = ado::adVarChar;  // ADO DataTypeEnum number
  long definedSize = 0;       // -1 or 0 for unlimited text
  int attributes = ado::kDefaultAttributes;
  int precision = 0;     // numeric precision, where the source reports one
  int numericScale = 0;  // numeric scale, where the source reports one

  bool nullable() const { return (attributes & (ado::adFldIsNullable | ado::adFldMayBeNull)) != 0; }
};

class Recordset {
 public:
  Recordset();
  ~Recordset();
  Recordset(const Recordset&);
  Recordset& operator=(const Recordset&);
  Recordset(Recordset&&) noexcept;
  Recordset& operator=(Recordset&&) noexcept;

  // ---- Layout (before open) ----
  void appendField(std::string name, int type, long definedSize,
                   int attributes = ado::kDefaultAttributes);
  void appendField(FieldDef field);
  const std::vector<FieldDef>& fields() const;
  int fieldCount() const;
  // Index of the field with this name (any case), or -1.
  int fieldIndex(std::string_view name) const;
  const FieldDef& field(int index) const;

  // Open makes the recordset usable; a recordset from a driver is open.
  void open();
  void close();
  bool isOpen() const;

  // ---- Rows and cursor ----
  // Appends a row of Null values and makes it current.
  void addNew();
  // Deletes the current row (ADO's Delete): it leaves recordCount() at once;
  // the cursor stays on the deleted row (reading it raises 3021) until it
  // moves, so "delete, then moveNext" visits every row. The row keeps its
  // storage number and is skipped by filters, sorts and RowIndex. Deleting
  // many rows in one pass costs O(1) each.
  void deleteCurrent();
  bool isDeleted(long row) const;
  // Room for this many rows in all (optional; for bulk fills).
  void reserve(long rows);
  // Rows visible through the current filter.
  long recordCount() const;
  bool eof() const;
  bool bof() const;
  void moveFirst();
  void moveNext();
  void movePrevious();
  void moveLast();
  // 1-based position of the cursor among the visible rows (0 at BOF/EOF).
  long absolutePosition() const;

  // Current row's value. Unknown names raise ADO's "Item cannot be found"
  // (3265); no current row raises 3021.
  Value get(int index) const;
  Value get(std::string_view name) const;
  void set(int index, Value v);
  void set(std::string_view name, Value v);

  // ---- Direct row access (row numbers are storage order, 0-based) ----
  long rowCount() const;  // all stored rows, ignoring the filter
  Value at(long row, int index) const;
  void setAt(long row, int index, Value v);
  // at(row, index).text() without building a Value (for keys and lookups).
  std::string textAt(long row, int index) const;
  // textAt without a copy: a text cell's bytes in place (valid until the
  // row is next written), any other cell's text in `scratch`.
  std::string_view textViewAt(long row, int index, std::string& scratch) const;
  bool isNullAt(long row, int index) const;
  // setAt(row, index, Value(text)) without building a Value when the field
  // holds text (the bulk path of the drivers).
  void setTextAt(long row, int index, std::string_view text);
  // setAt(row, index, from.at(fromRow, fromIndex)), without building a
  // Value when a text or Null cell goes to a text field.
  void copyAt(long row, int index, const Recordset& from, long fromRow, int fromIndex);
  // copyAt of `count` fields side by side (index... from fromIndex...), a
  // text of `from` shared rather than copied where both fields hold text:
  // this recordset then keeps alive the text blocks of `from` (up to 64 KiB
  // each) that its cells refer to. For filling a result from a lookup read
  // whole, whose blocks it refers to anyway.
  void copyCells(long row, int index, const Recordset& from, long fromRow, int fromIndex, int count);
  // Storage row number of the cursor's row, or -1.
  long currentRow() const;
  // Moves the cursor to a storage row (which must be visible).
  void moveToRow(long row);

  // ---- Filter and sort ----
  // ADO filter syntax: "FIELD op value" clauses joined by AND / OR (AND
  // binds tighter), with brackets; FIELD may be written [Field Name]; op one
  // of = <> < > <= >= LIKE (and IS [NOT] NULL); values 'text' ('' for a
  // quote), #date# (read day first like every date text here), numbers or
  // NULL ("FIELD = NULL", "FIELD <> NULL"); LIKE takes * or % wildcards.
  // Texts compare without regard to case, as ADO does; a text field compared
  // with a number or date compares as one when its text reads as one. Null
  // fields match only "= NULL". "" clears the filter. The cursor moves to the
  // first visible row. Bad syntax raises 3001; an unknown field 3265.
  void setFilter(std::string_view criteria);
  const std::string& filter() const;
  // "FIELD [ASC|DESC], ..."; "" restores storage order. Stable. Null sorts
  // first ascending; texts compare without regard to case; numbers and
  // dates before texts when a field holds both.
  void setSort(std::string_view sort);
  const std::string& sort() const;

  // Bytes held by the rows (for measurement).
  size_t memoryUsage() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace orvalis
