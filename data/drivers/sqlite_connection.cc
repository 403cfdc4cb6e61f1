#include "data/drivers/sqlite_connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "data/drivers/column_types.h"
#include "data/drivers/driver_error.h"
#include "data/drivers/value_errors.h"
#include "data/drivers/value_text.h"
#include "runtime/basic_string.h"

namespace orvalis::drivers {

namespace {

const std::string kDriver = "SQLite";

struct DatabaseCloser {
  void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
struct StatementFinalizer {
  void operator()(sqlite3_stmt* st) const { sqlite3_finalize(st); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

// A date column's text: ISO as the driver writes it, or a date the Basic
// rules read (day first); anything else stays text, which the caller
// refuses. Blank text stays text too: the recordset stores it as Null.
Value dateFromText(std::string_view text) {
  if (auto d = parseIsoDateTime(text)) return Value(*d);
  Value v(text);
  if (trim(text).empty()) return v;
  try {
    return Value(v.toDate());
  } catch (const Error&) {
    return v;
  }
}

// A date column holds Null, blank text or a date, as on an engine that
// types its columns.
bool fitsDateColumn(const Value& v) { return v.isDate() || (v.isText() && trim(v.asText()).empty()); }

// What the statement's row can tell for a value error: each column's
// origin from SQLite's column metadata, and the row's texts.
RowSource rowSource(sqlite3* db, sqlite3_stmt* st) {
  RowSource row;
  row.columns = sqlite3_column_count(st);
  row.origin = [db, st](int i) {
    ColumnOrigin o;
    const char* table = sqlite3_column_table_name(st, i);
    const char* column = sqlite3_column_origin_name(st, i);
    if (table == nullptr || column == nullptr) {
      const char* name = sqlite3_column_name(st, i);
      o.column = name ? name : "";
      return o;
    }
    o.table = table;
    o.column = column;
    int primaryKey = 0;
    if (sqlite3_table_column_metadata(db, sqlite3_column_database_name(st, i), table, column, nullptr, nullptr,
                                      nullptr, &primaryKey, nullptr) == SQLITE_OK) {
      o.primaryKey = primaryKey != 0;
    }
    return o;
  };
  row.text = [st](int i) -> std::optional<std::string> {
    if (sqlite3_column_type(st, i) == SQLITE_NULL) return std::nullopt;
    const char* p = reinterpret_cast<const char*>(sqlite3_column_text(st, i));
    return std::string(p ? p : "", static_cast<size_t>(sqlite3_column_bytes(st, i)));
  };
  return row;
}

Value readValue(sqlite3_stmt* st, int i, ColumnKind kind) {
  switch (sqlite3_column_type(st, i)) {
    case SQLITE_NULL:
      return Value::null();
    case SQLITE_INTEGER: {
      sqlite3_int64 v = sqlite3_column_int64(st, i);
      if (kind == ColumnKind::Boolean) return Value(v != 0);
      if (kind == ColumnKind::Numeric || kind == ColumnKind::Double) return Value(static_cast<double>(v));
      return Value(static_cast<long long>(v));
    }
    case SQLITE_FLOAT:
      return Value(sqlite3_column_double(st, i));
    case SQLITE_TEXT: {
      const char* p = reinterpret_cast<const char*>(sqlite3_column_text(st, i));
      std::string_view text(p, static_cast<size_t>(sqlite3_column_bytes(st, i)));
      if (kind == ColumnKind::Date) return dateFromText(text);
      return Value(text);
    }
    default: {  // SQLITE_BLOB
      const char* p = static_cast<const char*>(sqlite3_column_blob(st, i));
      return Value(std::string_view(p ? p : "", static_cast<size_t>(sqlite3_column_bytes(st, i))));
    }
  }
}

// Rows of a bulk load gathered until they are bound: each value a cell,
// the texts one after the other in one buffer.
constexpr size_t kBulkRows = 32;
constexpr size_t kBulkValues = 999;  // parameters in one statement, at most

class CellRow final : public BulkRow {
 public:
  enum class Kind : uint8_t { Null, Integer, Real, Text };
  struct Cell {
    Kind kind = Kind::Null;
    uint32_t length = 0;
    union {
      sqlite3_int64 integer = 0;
      double real;
      size_t offset;
    };
  };

  void null() override { cells.push_back(Cell{}); }
  void text(std::string_view text) override {
    Cell c;
    c.kind = Kind::Text;
    c.offset = texts.size();
    c.length = static_cast<uint32_t>(text.size());
    texts.append(text);
    cells.push_back(c);
  }
  void value(const Value& v) override {
    Cell c;
    switch (v.kind()) {
      case Value::Kind::Empty:
      case Value::Kind::Null:
        break;
      case Value::Kind::Boolean:
        c.kind = Kind::Integer;
        c.integer = v.asBool() ? 1 : 0;
        break;
      case Value::Kind::Integer:
        c.kind = Kind::Integer;
        c.integer = v.asInteger();
        break;
      case Value::Kind::Double:
        c.kind = Kind::Real;
        c.real = v.asDouble();
        break;
      case Value::Kind::Text:
        text(v.asText());
        return;
      case Value::Kind::Date:
        c.kind = Kind::Text;
        c.offset = texts.size();
        appendIsoDateTime(texts, v.asDate());
        c.length = static_cast<uint32_t>(texts.size() - c.offset);
        break;
    }
    cells.push_back(c);
  }
  void clear() {
    cells.clear();
    texts.clear();
  }

  std::vector<Cell> cells;
  std::string texts;
};

// The result's fields. The first step comes before the columns are
// described: a statement prepared before a schema change is prepared again
// by that step (rc is its result). An expression column takes its type
// from the first row.
std::vector<Column> describeColumns(sqlite3_stmt* statement, int rc) {
  const int n = sqlite3_column_count(statement);
  std::vector<Column> columns;
  columns.reserve(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const char* name = sqlite3_column_name(statement, i);
    const char* declared = sqlite3_column_decltype(statement, i);
    columns.push_back(columnForDeclaredType(name ? name : "", declared ? declared : ""));
  }
  for (int i = 0; i < n; ++i) {
    Column& c = columns[static_cast<size_t>(i)];
    if (c.kind == ColumnKind::Untyped && rc == SQLITE_ROW) {
      c = columnForStorageClass(std::move(c.field.name), sqlite3_column_type(statement, i));
    }
  }
  return columns;
}

// Columns whose stored text goes into a cell as it is.
std::vector<char> textFields(const std::vector<Column>& columns) {
  std::vector<char> text(columns.size());
  for (size_t i = 0; i < columns.size(); ++i) {
    text[i] = columns[i].kind != ColumnKind::Date && ado::isTextType(columns[i].field.type);
  }
  return text;
}

// The statement's current row as a ResultRow (see queryRows).
class StatementRow final : public ResultRow {
 public:
  StatementRow(sqlite3* db, sqlite3_stmt* statement, std::vector<Column> columns)
      : statement_(statement),
        columns_(std::move(columns)),
        textField_(textFields(columns_)),
        source_(rowSource(db, statement)),
        cells_(columns_.size()) {
    for (const Column& c : columns_) {
      window_.appendField(c.field);
      fields_.push_back(c.field);
    }
    window_.open();
    window_.addNew();
  }

  const std::vector<FieldDef>& fields() const { return fields_; }

  // Takes the statement's current row: texts of text fields are looked at
  // in place, values the recordset would store unchanged are kept, every
  // other value is written to the window row (a one-row recordset of the
  // same fields), which converts it or raises the value error.
  void read() {
    const int n = static_cast<int>(columns_.size());
    for (int i = 0; i < n; ++i) {
      Cell& cell = cells_[static_cast<size_t>(i)];
      const int storage = sqlite3_column_type(statement_, i);
      if (storage == SQLITE_NULL) {
        cell.kind = Cell::Null;
        continue;
      }
      if (storage == SQLITE_TEXT && textField_[static_cast<size_t>(i)]) {
        const char* p = reinterpret_cast<const char*>(sqlite3_column_text(statement_, i));
        cell.kind = Cell::Text;
        cell.text = std::string_view(p, static_cast<size_t>(sqlite3_column_bytes(statement_, i)));
        continue;
      }
      const Column& c = columns_[static_cast<size_t>(i)];
      Value v = readValue(statement_, i, c.kind);
      if (c.kind == ColumnKind::Date && !fitsDateColumn(v)) raiseValueError(kDriver, i, c.field.type, v, source_);
      if (heldAsRead(c.field.type, v)) {
        cell.kind = Cell::Held;
        cell.value = std::move(v);
        continue;
      }
      storeColumnValue(window_, i, std::move(v), kDriver, source_);
      cell.kind = Cell::Window;
    }
  }

  std::string_view text(int index, std::string& scratch) const override {
    const Cell& cell = cells_.at(static_cast<size_t>(index));
    if (cell.kind == Cell::Text) return cell.text;
    if (cell.kind == Cell::Null) return {};
    if (cell.kind == Cell::Held) return scratch = cell.value.text();
    return window_.textViewAt(0, index, scratch);
  }
  Value value(int index) const override {
    const Cell& cell = cells_.at(static_cast<size_t>(index));
    if (cell.kind == Cell::Text) return Value(cell.text);
    if (cell.kind == Cell::Null) return Value::null();
    if (cell.kind == Cell::Held) return cell.value;
    return window_.at(0, index);
  }

 private:
  // A date, a double in a double field and an integer in a BIGINT field
  // are held as they are read: the recordset would store them unchanged.
  static bool heldAsRead(int type, const Value& v) {
    return (v.isDate() && (type == ado::adDBTimeStamp || type == ado::adDate)) ||
           (type == ado::adDouble && v.kind() == Value::Kind::Double) ||
           (type == ado::adBigInt && v.kind() == Value::Kind::Integer);
  }

  struct Cell {
    enum Kind : uint8_t { Null, Text, Held, Window } kind = Null;
    std::string_view text;
    Value value;
  };
  sqlite3_stmt* statement_;
  std::vector<Column> columns_;
  std::vector<char> textField_;
  RowSource source_;
  std::vector<FieldDef> fields_;
  std::vector<Cell> cells_;
  Recordset window_;
};

class SqliteConnection final : public Connection {
 public:
  SqliteConnection(const std::string& path, const ConnectionOptions& options)
      : url_("sqlite:" + path), busyTimeoutMs_(options.busyTimeoutMs) {
    sqlite3* raw = nullptr;
    // One thread at a time uses a connection, so SQLite need not lock the
    // handle on every call (each column read of each row took a mutex).
    int rc = sqlite3_open_v2(path.c_str(), &raw,
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX,
                             nullptr);
    db_.reset(raw);
    if (rc != SQLITE_OK) {
      raiseDriverError(kDriver, "cannot open database '" + path + "'",
                       raw ? sqlite3_errmsg(raw) : sqlite3_errstr(rc));
    }
    sqlite3_busy_timeout(db_.get(), busyTimeoutMs_);
    // A page cache of up to 64 MiB (SQLite's default is 2 MiB): reports read
    // large tables through their indexes, and with the small cache every
    // table page is fetched from the file again for each row it holds.
    sqlite3_exec(db_.get(), "PRAGMA cache_size = -65536", nullptr, nullptr, nullptr);
  }

  std::string provider() const override { return "SQLITE"; }

  Recordset query(const std::string& sql) override {
    traced(sql);
    const Underway underway(*this, sql, false);
    sqlite3_stmt* const statement = cachedStatement(sql);
    const ResetOnExit reset{statement};

    int rc = sqlite3_step(statement);
    const std::vector<Column> columns = describeColumns(statement, rc);
    const int n = static_cast<int>(columns.size());

    Recordset rs;
    for (const Column& c : columns) rs.appendField(c.field);
    rs.open();
    const RowSource row = rowSource(db_.get(), statement);
    // Text bound for a text field goes straight into its cell.
    const std::vector<char> textField = textFields(columns);
    for (; rc == SQLITE_ROW; rc = sqlite3_step(statement)) {
      rs.addNew();
      const long at = rs.currentRow();
      for (int i = 0; i < n; ++i) {
        // One column call a cell instead of three: the connection has no
        // mutex (multi-thread mode), where SQLite makes no difference
        // between the column's unprotected value and a protected one.
        sqlite3_value* const cell = sqlite3_column_value(statement, i);
        const int storage = sqlite3_value_type(cell);
        if (storage == SQLITE_NULL) continue;  // the new row holds Nulls
        if (storage == SQLITE_TEXT && textField[static_cast<size_t>(i)]) {
          const char* p = reinterpret_cast<const char*>(sqlite3_value_text(cell));
          rs.setTextAt(at, i, std::string_view(p, static_cast<size_t>(sqlite3_value_bytes(cell))));
          continue;
        }
        const Column& c = columns[static_cast<size_t>(i)];
        Value v = readValue(statement, i, c.kind);
        if (v.isNull()) continue;  // the new row holds Nulls
        if (c.kind == ColumnKind::Date && !fitsDateColumn(v)) raiseValueError(kDriver, i, c.field.type, v, row);
        storeColumnValue(rs, i, std::move(v), kDriver, row);
      }
    }
    if (rc != SQLITE_DONE) fail("query failed");
    rs.moveFirst();
    return rs;
  }

  // As query(), each row handed on while the statement holds it: a text
  // bound for a text field is read in place, any other value reads as
  // query()'s recordset would hold it and fails where that would (see
  // StatementRow).
  void queryRows(const std::string& sql, ResultSink& sink) override {
    traced(sql);
    const Underway underway(*this, sql, false);
    sqlite3_stmt* const statement = cachedStatement(sql);
    const ResetOnExit reset{statement};
    int rc = sqlite3_step(statement);
    StatementRow row(db_.get(), statement, describeColumns(statement, rc));
    sink.start(row.fields());
    for (; rc == SQLITE_ROW; rc = sqlite3_step(statement)) {
      row.read();
      sink.row(row);
    }
    if (rc != SQLITE_DONE) fail("query failed");
  }

  long execute(const std::string& sql) override {
    traced(sql);
    const Underway underway(*this, sql, true);
    return run(sql);
  }

  void begin() override { execute("BEGIN"); }
  void commit() override { execute("COMMIT"); }
  void rollback() override { execute("ROLLBACK"); }

  long bulkInsert(const std::string& table, const std::vector<std::string>& columns,
                  const std::function<bool(std::vector<Value>&)>& nextRow) override {
    std::vector<Value> row;
    return bulkLoad(table, columns, [&](BulkRow& out) {
      row.resize(columns.size());
      if (!nextRow(row)) return false;
      for (const Value& v : row) out.value(v);
      return true;
    });
  }

  // Rows are gathered and sent kBulkRows at a time through one statement
  // of that many rows (fewer for a wide table): a step per batch instead
  // of a step per row. The last rows, fewer than a batch, go one by one.
  long bulkLoad(const std::string& table, const std::vector<std::string>& columns,
                const std::function<bool(BulkRow&)>& nextRow) override {
    const std::string what = "bulk insert into " + table + " failed";
    if (columns.empty()) fail(what, "no columns given");
    const size_t n = columns.size();
    const size_t batch = std::clamp<size_t>(kBulkValues / n, 1, kBulkRows);
    std::string one = "(";
    for (size_t i = 0; i < n; ++i) one += i ? ", ?" : "?";
    one += ")";
    const std::string head = "INSERT INTO " + table + " (" + join(columns, ", ") + ") VALUES ";
    Statement single, many;
    auto prepared = [&](Statement& st, size_t rows) -> sqlite3_stmt* {
      if (!st) {
        std::string sql = head + one;
        for (size_t r = 1; r < rows; ++r) sql += ", " + one;
        traced(sql);
        st = prepare(sql, nullptr, what);
      }
      return st.get();
    };
    const bool ownTransaction = sqlite3_get_autocommit(db_.get()) != 0;
    if (ownTransaction) begin();
    try {
      CellRow row;
      long count = 0;
      for (;;) {
        const size_t before = row.cells.size();
        if (!nextRow(row)) break;
        const size_t given = row.cells.size() - before;
        if (given != n) {
          fail(what, "a row has " + std::to_string(given) + " values for " + std::to_string(n) + " columns");
        }
        ++count;
        if (row.cells.size() == batch * n) {
          step(prepared(many, batch), row, 0, row.cells.size(), what);
          row.clear();
        }
      }
      for (size_t at = 0; at < row.cells.size(); at += n) step(prepared(single, 1), row, at, n, what);
      single.reset();
      many.reset();
      if (ownTransaction) commit();
      return count;
    } catch (...) {
      if (ownTransaction) sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
      throw;
    }
  }

 private:
  // Marks the statement under way, for the messages of fail().
  struct Underway {
    Underway(SqliteConnection& c, const std::string& sql, bool write) : c_(c) {
      c_.statement_ = &sql;
      c_.writing_ = write;
    }
    ~Underway() {
      c_.statement_ = nullptr;
      c_.writing_ = false;
    }
    Underway(const Underway&) = delete;
    Underway& operator=(const Underway&) = delete;
    SqliteConnection& c_;
  };

  // The engine's error; a busy database or a failing file is a database
  // fault (runtime/database_fault.h), anything else a failed statement.
  [[noreturn]] void fail(std::string_view what) const {
    const int code = sqlite3_extended_errcode(db_.get()) & 0xff;
    const std::string sql = statement_ ? *statement_ : std::string(what);
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
      raiseFault(kDriver, err::kDatabaseLocked,
                 "the database " + url_ + " is locked by another writer: waited " + std::to_string(busyTimeoutMs_) +
                     " ms running \"" + statementHead(sql) + "\"");
    }
    if (code == SQLITE_IOERR || code == SQLITE_CORRUPT || code == SQLITE_NOTADB || code == SQLITE_FULL ||
        code == SQLITE_CANTOPEN) {
      raiseFault(kDriver, err::kOutcomeUnknown,
                 "the database file " + url_ + " failed running \"" + statementHead(sql) + "\"" +
                     (writing_ || sqlite3_get_autocommit(db_.get()) == 0 ? " (whether the write was stored is unknown)"
                                                                         : ""),
                 sqlite3_errmsg(db_.get()));
    }
    raiseDriverError(kDriver, what, sqlite3_errmsg(db_.get()));
  }
  [[noreturn]] void fail(std::string_view what, std::string_view why) const {
    raiseDriverError(kDriver, what, why);
  }

  // Resets a cached statement when its query is done (or failed), so that
  // it holds no read transaction open between uses.
  struct ResetOnExit {
    sqlite3_stmt* handle;
    ~ResetOnExit() { sqlite3_reset(handle); }
  };

  // The prepared statement of a query's text: from the cache when the text
  // was prepared before, else prepared (exactly one statement) and cached,
  // the least recently used beyond kCachedStatements finalized.
  sqlite3_stmt* cachedStatement(const std::string& sql) {
    if (auto it = cache_.find(sql); it != cache_.end()) {
      recent_.splice(recent_.begin(), recent_, it->second);
      return it->second->second.get();
    }
    const char* tail = nullptr;
    Statement st = prepare(sql, &tail, "query failed", SQLITE_PREPARE_PERSISTENT);
    if (!st) fail("query failed", "the SQL text holds no statement");
    if (prepare(std::string_view(tail, static_cast<size_t>(sql.data() + sql.size() - tail)), nullptr,
                "query failed")) {
      fail("query failed", "the SQL text holds more than one statement");
    }
    if (recent_.size() >= kCachedStatements) {
      cache_.erase(recent_.back().first);
      recent_.pop_back();
    }
    recent_.emplace_front(sql, std::move(st));
    cache_.emplace(recent_.front().first, recent_.begin());
    return recent_.front().second.get();
  }

  // The first statement of sql (nullptr when it holds only blanks and
  // comments); *tail receives the rest of the text.
  Statement prepare(std::string_view sql, const char** tail, std::string_view what, unsigned flags = 0) const {
    sqlite3_stmt* raw = nullptr;
    int rc = sqlite3_prepare_v3(db_.get(), sql.data(), static_cast<int>(sql.size()), flags, &raw, tail);
    Statement st(raw);
    if (rc != SQLITE_OK) fail(what);
    return st;
  }

  // Runs every statement of the text; returns the rows they changed.
  long run(std::string_view sql) {
    long changed = 0;
    const char* rest = sql.data();
    const char* end = sql.data() + sql.size();
    while (rest < end) {
      const char* tail = end;
      Statement st = prepare(std::string_view(rest, static_cast<size_t>(end - rest)), &tail, "statement failed");
      if (tail <= rest) break;
      rest = tail;
      if (!st) continue;
      sqlite3_int64 before = sqlite3_total_changes64(db_.get());
      int rc;
      while ((rc = sqlite3_step(st.get())) == SQLITE_ROW) {
      }
      if (rc != SQLITE_DONE) fail("statement failed");
      if (sqlite3_total_changes64(db_.get()) != before) changed += static_cast<long>(sqlite3_changes64(db_.get()));
    }
    return changed;
  }

  // Binds count cells of the row from `at` to the statement's parameters
  // and runs it.
  void step(sqlite3_stmt* st, const CellRow& row, size_t at, size_t count, const std::string& what) const {
    for (size_t i = 0; i < count; ++i) {
      const CellRow::Cell& c = row.cells[at + i];
      const int p = static_cast<int>(i) + 1;
      int rc = SQLITE_OK;
      switch (c.kind) {
        case CellRow::Kind::Null:
          rc = sqlite3_bind_null(st, p);
          break;
        case CellRow::Kind::Integer:
          rc = sqlite3_bind_int64(st, p, c.integer);
          break;
        case CellRow::Kind::Real:
          rc = sqlite3_bind_double(st, p, c.real);
          break;
        case CellRow::Kind::Text:
          rc = sqlite3_bind_text(st, p, row.texts.data() + c.offset, static_cast<int>(c.length), SQLITE_STATIC);
          break;
      }
      if (rc != SQLITE_OK) fail("binding a value failed");
    }
    if (sqlite3_step(st) != SQLITE_DONE) fail(what);
    sqlite3_reset(st);
  }

  // Query statements kept prepared, most recently used first; declared
  // after db_, so they are finalized before the handle closes.
  static constexpr size_t kCachedStatements = 64;
  std::unique_ptr<sqlite3, DatabaseCloser> db_;
  std::list<std::pair<std::string, Statement>> recent_;
  std::unordered_map<std::string_view, std::list<std::pair<std::string, Statement>>::iterator> cache_;
  std::string url_;
  int busyTimeoutMs_;
  const std::string* statement_ = nullptr;  // the statement under way, for messages
  bool writing_ = false;
};

}  // namespace

std::unique_ptr<Connection> openSqlite(const std::string& path, const ConnectionOptions& options) {
  return std::make_unique<SqliteConnection>(path, options);
}

}  // namespace orvalis::drivers
