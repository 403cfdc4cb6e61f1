#include "runtime/recordset.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

#include "runtime/error.h"
#include "runtime/recordset_cells.h"
#include "runtime/recordset_detail.h"
#include "runtime/recordset_filter.h"
#include "runtime/recordset_sort.h"

// The Recordset itself: its fields, the visible rows (the view) and the
// cursor over them. Cells live in recordset_cells, the filter and the sort
// that choose and order the view in recordset_filter and recordset_sort.

namespace orvalis {

using namespace recordset_detail;

namespace recordset_detail {

[[noreturn]] void raiseNoCurrentRecord() {
  throw Error(err::kNoCurrentRecord, kSource,
              "Either BOF or EOF is True, or the current record has been deleted. Requested "
              "operation requires a current record.");
}

[[noreturn]] void raiseItemNotFound() {
  throw Error(err::kItemNotFound, "ADODB.Fields",
              "Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

[[noreturn]] void raiseBadArgument(const std::string& detail) {
  throw Error(err::kInvalidArgument, kSource,
              "Arguments are of the wrong type, are out of acceptable range, or are in conflict with "
              "one another. (" + detail + ")");
}

}  // namespace recordset_detail

namespace {

struct NameHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const { return hashNoCase(s); }
};
struct NameEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const { return equalNoCase(a, b); }
};

}  // namespace

struct Recordset::Impl {
  std::vector<FieldDef> fields;
  std::unordered_map<std::string, int, NameHash, NameEqual> byName;  // any case
  CellStore cells;
  bool open = false;
  // Rows that were deleted; empty until the first delete.
  std::vector<bool> deleted;
  long deletedCount = 0;
  // Visible rows in cursor order; with `identity` all rows in storage order.
  // A deleted row leaves a tombstone (-1) in the view so that the cursor can
  // stay on it until it moves; tombstones are squeezed out as the cursor
  // moves once they make up half the view.
  bool identity = true;
  std::vector<long> view;
  long tombstones = 0;
  mutable std::vector<long> positionOfRow;  // inverse of view, built on demand
  long cursor = -1;  // index into the view slots; -1 = BOF, == slots() = EOF
  std::string filter;
  std::string sort;

  long rows() const { return cells.rows(); }
  long slots() const { return identity ? rows() : static_cast<long>(view.size()); }
  long visible() const { return slots() - tombstones; }
  long slotRow(long pos) const { return identity ? pos : view[static_cast<size_t>(pos)]; }
  bool onTombstone() const { return !identity && cursor >= 0 && cursor < slots() && view[static_cast<size_t>(cursor)] < 0; }
  bool atEof() const { return visible() == 0 || (cursor >= slots()); }
  bool atBof() const { return visible() == 0 || cursor < 0; }

  void skipForward() {
    while (!identity && cursor >= 0 && cursor < slots() && view[static_cast<size_t>(cursor)] < 0) ++cursor;
  }
  void skipBackward() {
    while (!identity && cursor >= 0 && cursor < slots() && view[static_cast<size_t>(cursor)] < 0) --cursor;
  }
  void squeezeTombstones() {
    if (tombstones < 1024 || tombstones * 2 < static_cast<long>(view.size()) || onTombstone()) return;
    long live = 0;
    long newCursor = cursor < 0 ? -1 : -2;
    for (size_t i = 0; i < view.size(); ++i) {
      if (static_cast<long>(i) == cursor) newCursor = live;
      if (view[i] >= 0) view[static_cast<size_t>(live++)] = view[i];
    }
    view.resize(static_cast<size_t>(live));
    cursor = newCursor == -2 ? live : newCursor;
    tombstones = 0;
    invalidatePositions();
  }

  bool rowDeleted(long row) const { return deletedCount > 0 && deleted[static_cast<size_t>(row)]; }

  void invalidatePositions() { positionOfRow.clear(); }

  // Rebuilds the visible rows from the filter, the sort and the deletions,
  // then puts the cursor on the first of them.
  void rebuildView(const RowFilter& rowFilter, const std::vector<SortKey>& keys) {
    invalidatePositions();
    cursor = 0;
    view.clear();
    tombstones = 0;
    if (rowFilter.empty() && keys.empty() && deletedCount == 0) {
      identity = true;
      return;
    }
    identity = false;
    for (long row = 0; row < rows(); ++row) {
      if (rowDeleted(row)) continue;
      if (!rowFilter.empty() && !rowFilter.matches(cells, row)) continue;
      view.push_back(row);
    }
    sortRows(view, cells, keys);
  }
};

Recordset::Recordset() : impl_(std::make_unique<Impl>()) {}
Recordset::~Recordset() = default;
Recordset::Recordset(const Recordset& o) : impl_(std::make_unique<Impl>(*o.impl_)) {}
Recordset& Recordset::operator=(const Recordset& o) {
  if (this != &o) impl_ = std::make_unique<Impl>(*o.impl_);
  return *this;
}
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;

void Recordset::appendField(std::string name, int type, long definedSize, int attributes) {
  FieldDef f;
  f.name = std::move(name);
  f.type = type;
  f.definedSize = definedSize;
  f.attributes = attributes;
  appendField(std::move(f));
}

void Recordset::appendField(FieldDef field) {
  if (impl_->open) {
    throw Error(err::kDatabase, "ADODB.Fields", "Operation is not allowed when the object is open.");
  }
  impl_->byName.emplace(std::string(trimView(field.name)), static_cast<int>(impl_->fields.size()));
  impl_->cells.addColumn(field.type);
  impl_->fields.push_back(std::move(field));
}

const std::vector<FieldDef>& Recordset::fields() const { return impl_->fields; }
int Recordset::fieldCount() const { return static_cast<int>(impl_->fields.size()); }

int Recordset::fieldIndex(std::string_view name) const {
  auto it = impl_->byName.find(trimView(name));
  return it == impl_->byName.end() ? -1 : it->second;
}

const FieldDef& Recordset::field(int index) const {
  if (index < 0 || index >= fieldCount()) raiseItemNotFound();
  return impl_->fields[static_cast<size_t>(index)];
}

void Recordset::open() {
  if (impl_->open) return;
  impl_->open = true;
  impl_->cursor = 0;
}

void Recordset::close() {
  Impl& m = *impl_;
  m.open = false;
  m.cells.clear();
  m.deleted.clear();
  m.deletedCount = 0;
  m.identity = true;
  m.view.clear();
  m.tombstones = 0;
  m.invalidatePositions();
  m.cursor = -1;
  m.filter.clear();
  m.sort.clear();
}

bool Recordset::isOpen() const { return impl_->open; }

void Recordset::reserve(long rows) { impl_->cells.reserve(rows); }

void Recordset::addNew() {
  Impl& m = *impl_;
  if (!m.open) open();
  long row = m.cells.addRow();
  if (m.deletedCount > 0) m.deleted.push_back(false);
  if (!m.identity) {
    m.view.push_back(row);
    m.invalidatePositions();
  }
  m.cursor = m.slots() - 1;
}

void Recordset::deleteCurrent() {
  Impl& m = *impl_;
  long row = currentRow();
  if (row < 0) raiseNoCurrentRecord();
  if (m.deletedCount == 0) m.deleted.assign(static_cast<size_t>(m.rows()), false);
  m.deleted[static_cast<size_t>(row)] = true;
  ++m.deletedCount;
  if (m.identity) {
    m.view.resize(static_cast<size_t>(m.rows()));
    for (long i = 0; i < m.rows(); ++i) m.view[static_cast<size_t>(i)] = i;
    m.identity = false;
  }
  m.view[static_cast<size_t>(m.cursor)] = -1;  // the cursor stays on it
  ++m.tombstones;
  m.invalidatePositions();
}

bool Recordset::isDeleted(long row) const {
  return row >= 0 && row < impl_->rows() && impl_->rowDeleted(row);
}

long Recordset::recordCount() const { return impl_->visible(); }
bool Recordset::eof() const { return impl_->atEof(); }
bool Recordset::bof() const { return impl_->atBof(); }

void Recordset::moveFirst() {
  Impl& m = *impl_;
  m.cursor = 0;
  m.skipForward();
  m.squeezeTombstones();
}

void Recordset::moveNext() {
  Impl& m = *impl_;
  if (!m.onTombstone() && m.atEof()) raiseNoCurrentRecord();
  ++m.cursor;
  m.skipForward();
  m.squeezeTombstones();
}

void Recordset::movePrevious() {
  Impl& m = *impl_;
  if (!m.onTombstone() && m.atBof()) raiseNoCurrentRecord();
  --m.cursor;
  m.skipBackward();
  m.squeezeTombstones();
}

void Recordset::moveLast() {
  Impl& m = *impl_;
  m.cursor = m.slots() - 1;
  m.skipBackward();
  if (m.visible() == 0) m.cursor = 0;
  m.squeezeTombstones();
}

long Recordset::absolutePosition() const {
  const Impl& m = *impl_;
  if (currentRow() < 0) return 0;
  if (m.identity || m.tombstones == 0) return m.cursor + 1;
  return static_cast<long>(std::count_if(m.view.begin(), m.view.begin() + m.cursor + 1, [](long r) { return r >= 0; }));
}

long Recordset::currentRow() const {
  const Impl& m = *impl_;
  if (m.atBof() || m.atEof() || m.onTombstone()) return -1;
  return m.slotRow(m.cursor);
}

void Recordset::moveToRow(long row) {
  Impl& m = *impl_;
  if (row < 0 || row >= m.rows() || m.rowDeleted(row)) {
    m.cursor = m.slots();
    return;
  }
  if (m.identity) {
    m.cursor = row;
    return;
  }
  if (m.positionOfRow.empty()) {
    m.positionOfRow.assign(static_cast<size_t>(m.rows()), -1);
    for (size_t i = 0; i < m.view.size(); ++i) {
      if (m.view[i] >= 0) m.positionOfRow[static_cast<size_t>(m.view[i])] = static_cast<long>(i);
    }
  }
  long pos = m.positionOfRow[static_cast<size_t>(row)];
  m.cursor = pos < 0 ? m.slots() : pos;
}

Value Recordset::get(int index) const {
  field(index);
  long row = currentRow();
  if (row < 0) raiseNoCurrentRecord();
  return impl_->cells.valueAt(row, index);
}

Value Recordset::get(std::string_view name) const {
  int idx = fieldIndex(name);
  if (idx < 0) raiseItemNotFound();
  return get(idx);
}

void Recordset::set(int index, Value v) {
  field(index);
  long row = currentRow();
  if (row < 0) raiseNoCurrentRecord();
  setAt(row, index, std::move(v));
}

void Recordset::set(std::string_view name, Value v) {
  int idx = fieldIndex(name);
  if (idx < 0) raiseItemNotFound();
  set(idx, std::move(v));
}

long Recordset::rowCount() const { return impl_->rows(); }

namespace {
void checkRow(long row, long rows) {
  if (row < 0 || row >= rows) throw Error(err::kSubscriptOutOfRange, kSource, "Subscript out of range");
}
}  // namespace

Value Recordset::at(long row, int index) const {
  field(index);
  checkRow(row, impl_->rows());
  return impl_->cells.valueAt(row, index);
}

std::string Recordset::textAt(long row, int index) const {
  field(index);
  checkRow(row, impl_->rows());
  const CellView c = impl_->cells.view(row, index);
  return isText(c.kind) ? std::string(c.text) : c.value().text();
}

std::string_view Recordset::textViewAt(long row, int index, std::string& scratch) const {
  field(index);
  checkRow(row, impl_->rows());
  const CellView c = impl_->cells.view(row, index);
  if (isText(c.kind)) return c.text;
  scratch = c.value().text();
  return scratch;
}

void Recordset::setTextAt(long row, int index, std::string_view text) {
  const FieldDef& f = field(index);
  checkRow(row, impl_->rows());
  if (ado::isTextType(f.type)) {
    impl_->cells.setText(row, index, text);
  } else {
    impl_->cells.set(row, index, coerce(Value(text), f.type));
  }
}

void Recordset::copyAt(long row, int index, const Recordset& from, long fromRow, int fromIndex) {
  const FieldDef& f = field(index);
  checkRow(row, impl_->rows());
  from.field(fromIndex);
  checkRow(fromRow, from.impl_->rows());
  const int fromType = from.impl_->fields[static_cast<size_t>(fromIndex)].type;
  // Between fields of one type (any two text types) a cell is copied as it
  // is stored: the conversion would give it back unchanged.
  const bool sameType = f.type == fromType || (ado::isTextType(f.type) && ado::isTextType(fromType));
  if (sameType && impl_->cells.copyCell(row, index, from.impl_->cells, fromRow, fromIndex)) return;
  const CellView c = from.impl_->cells.view(fromRow, fromIndex);
  // Text stays text in a text field.
  if (isText(c.kind) && ado::isTextType(f.type)) {
    if (&from == this) {
      impl_->cells.set(row, index, Value(c.text));  // the view is into this store
    } else {
      impl_->cells.setText(row, index, c.text);
    }
    return;
  }
  impl_->cells.set(row, index, coerce(c.value(), f.type));
}

void Recordset::copyCells(long row, int index, const Recordset& from, long fromRow, int fromIndex, int count) {
  if (count <= 0) return;
  field(index);
  field(index + count - 1);
  from.field(fromIndex);
  from.field(fromIndex + count - 1);
  checkRow(row, impl_->rows());
  checkRow(fromRow, from.impl_->rows());
  const bool share = &from != this;
  for (int i = 0; i < count; ++i) {
    const int type = impl_->fields[static_cast<size_t>(index + i)].type;
    const int fromType = from.impl_->fields[static_cast<size_t>(fromIndex + i)].type;
    const bool sameType = type == fromType || (ado::isTextType(type) && ado::isTextType(fromType));
    if (!sameType || !impl_->cells.copyCell(row, index + i, from.impl_->cells, fromRow, fromIndex + i, share)) {
      copyAt(row, index + i, from, fromRow, fromIndex + i);
    }
  }
}

bool Recordset::isNullAt(long row, int index) const {
  field(index);
  checkRow(row, impl_->rows());
  return impl_->cells.isNull(row, index);
}

void Recordset::setAt(long row, int index, Value v) {
  const FieldDef& f = field(index);
  checkRow(row, impl_->rows());
  impl_->cells.set(row, index, coerce(std::move(v), f.type));
}

void Recordset::setFilter(std::string_view criteria) {
  RowFilter rowFilter(criteria, *this);
  auto keys = parseSort(impl_->sort, *this);
  impl_->filter = std::string(criteria);
  impl_->rebuildView(rowFilter, keys);
}

const std::string& Recordset::filter() const { return impl_->filter; }

void Recordset::setSort(std::string_view sort) {
  auto keys = parseSort(sort, *this);
  RowFilter rowFilter(impl_->filter, *this);
  impl_->sort = std::string(sort);
  impl_->rebuildView(rowFilter, keys);
}

const std::string& Recordset::sort() const { return impl_->sort; }

size_t Recordset::memoryUsage() const {
  const Impl& m = *impl_;
  size_t bytes = m.cells.memoryUsage();
  bytes += m.view.capacity() * sizeof(long) + m.positionOfRow.capacity() * sizeof(long);
  bytes += m.deleted.capacity() / 8;
  return bytes;
}

}  // namespace orvalis
