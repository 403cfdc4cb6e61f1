#include "demo/demo_database.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

#include "data/sql_text.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "runtime/error.h"
#include "demo/demo_calendar.h"
#include "demo/demo_catalog.h"
#include "demo/demo_tables.h"
#include "runtime/text_file.h"
#include "schema/partitions.h"
#include "schema/schema.h"

namespace orvalis {

namespace demo {

// Rows on their way from the generator to the loader: each value as the
// generator gave it, to be handed to the driver's BulkRow again.
class RowBatch final : public BulkRow {
 public:
  void null() override { cells_.push_back({0, kNull}); }
  void text(std::string_view text) override {
    cells_.push_back({static_cast<uint32_t>(texts_.size()), static_cast<uint32_t>(text.size())});
    texts_.append(text);
  }
  void value(const Value& v) override {
    if (v.isNull() || v.isEmpty()) return null();
    if (v.isText()) return text(v.asText());
    cells_.push_back({static_cast<uint32_t>(values_.size()), kOther});
    values_.push_back(v);
  }

  size_t rows() const { return ends_.size(); }
  // Closes the row under way; drop() forgets it.
  void end() { ends_.push_back(cells_.size()); }
  void drop() { cells_.resize(ends_.empty() ? 0 : ends_.back()); }
  void clear() {
    cells_.clear();
    texts_.clear();
    values_.clear();
    ends_.clear();
  }
  // Puts row r's values into out.
  void replay(size_t r, BulkRow& out) const {
    for (size_t i = r ? ends_[r - 1] : 0; i < ends_[r]; ++i) {
      const Cell& c = cells_[i];
      if (c.length == kNull) {
        out.null();
      } else if (c.length == kOther) {
        out.value(values_[c.at]);
      } else {
        out.text(std::string_view(texts_).substr(c.at, c.length));
      }
    }
  }

 private:
  // Eight bytes a cell: the cells cross from the generator's core to the
  // loader's, and the batch's memory goes back and forth between them. A
  // batch's texts stay far below 4 GB.
  static constexpr uint32_t kNull = 0xFFFFFFFF, kOther = 0xFFFFFFFE;
  struct Cell {
    uint32_t at;      // into texts_ or values_
    uint32_t length;  // a text's bytes, or kNull or kOther
  };
  std::vector<Cell> cells_;
  std::string texts_;
  std::vector<Value> values_;
  std::vector<size_t> ends_;  // each row's end in cells_
};

// A bounded queue from the generator's thread to the loader: a table's
// start, its batches of rows, its end; last the generator's own end (with
// its failure, if any). Either side stops the other: the loader by
// cancel(), which makes the generator's next put throw; the generator by
// its failure, which the loader raises.
class RowPipe {
 public:
  static constexpr size_t kBatchRows = 256;

  struct Piece {
    enum class Kind { Table, Rows, TableEnd, Finished } kind = Kind::Finished;
    std::string table;
    std::vector<std::string> columns;
    std::unique_ptr<RowBatch> rows;
    std::exception_ptr failure;
  };

  // ---- The generator's side ----
  void put(Piece piece) {
    std::unique_lock lock(mutex_);
    space_.wait(lock, [&] { return cancelled_ || queue_.size() < kDepth; });
    if (cancelled_) throw Cancelled{};
    queue_.push_back(std::move(piece));
    ready_.notify_one();
  }
  std::unique_ptr<RowBatch> emptyBatch() {
    std::lock_guard lock(mutex_);
    if (spare_.empty()) return std::make_unique<RowBatch>();
    std::unique_ptr<RowBatch> batch = std::move(spare_.back());
    spare_.pop_back();
    return batch;
  }
  void finish(std::exception_ptr failure) {
    std::lock_guard lock(mutex_);
    Piece last;
    last.failure = std::move(failure);
    queue_.push_back(std::move(last));
    ready_.notify_one();
  }

  // ---- The loader's side ----
  Piece take() {
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [&] { return !queue_.empty(); });
    Piece piece = std::move(queue_.front());
    queue_.pop_front();
    space_.notify_one();
    return piece;
  }
  void recycle(std::unique_ptr<RowBatch> batch) {
    batch->clear();
    std::lock_guard lock(mutex_);
    spare_.push_back(std::move(batch));
  }
  void cancel() {
    std::lock_guard lock(mutex_);
    cancelled_ = true;
    space_.notify_all();
  }

  // Thrown on the generator's thread once the loader has given up.
  struct Cancelled {};

 private:
  static constexpr size_t kDepth = 6;
  std::mutex mutex_;
  std::condition_variable ready_, space_;
  std::deque<Piece> queue_;
  std::vector<std::unique_ptr<RowBatch>> spare_;
  bool cancelled_ = false;
};

void Writer::rows(const std::string& table, const std::vector<std::string>& columns, size_t count,
                  const std::function<void(size_t, Row&)>& fill) {
  size_t next = 0;
  stream(table, columns, [&](Row& row) {
    if (next >= count) return false;
    fill(next++, row);
    return true;
  });
}

void Writer::stream(const std::string& table, const std::vector<std::string>& columns,
                    const std::function<bool(Row&)>& next) {
  using Piece = RowPipe::Piece;
  Piece start;
  start.kind = Piece::Kind::Table;
  start.table = table;
  start.columns = columns;
  pipe_.put(std::move(start));
  std::unique_ptr<RowBatch> batch = pipe_.emptyBatch();
  auto send = [&] {
    Piece rows;
    rows.kind = Piece::Kind::Rows;
    rows.rows = std::move(batch);
    pipe_.put(std::move(rows));
  };
  for (;;) {
    Row row(*batch);
    if (!next(row)) {
      batch->drop();
      break;
    }
    batch->end();
    if (batch->rows() == RowPipe::kBatchRows) {
      send();
      batch = pipe_.emptyBatch();
    }
  }
  if (batch->rows()) send();
  Piece end;
  end.kind = Piece::Kind::TableEnd;
  pipe_.put(std::move(end));
}

namespace {

// Writes what comes through the pipe until the generator finishes; raises
// the generator's failure.
void loadRows(Connection& connection, RowPipe& pipe, DemoReport& report,
              const std::function<void(long, const std::string&)>& onRows) {
  using Piece = RowPipe::Piece;
  for (;;) {
    Piece piece = pipe.take();
    if (piece.kind == Piece::Kind::Finished) {
      if (piece.failure) std::rethrow_exception(piece.failure);
      return;
    }
    const std::string table = piece.table;
    std::unique_ptr<RowBatch> batch;
    size_t at = 0;
    long sinceReport = 0;
    long written = connection.bulkLoad(table, piece.columns, [&](BulkRow& out) {
      while (!batch || at == batch->rows()) {
        if (batch) pipe.recycle(std::move(batch));
        Piece next = pipe.take();
        if (next.kind == Piece::Kind::TableEnd) return false;
        if (next.kind == Piece::Kind::Finished) {
          std::rethrow_exception(next.failure ? next.failure
                                              : std::make_exception_ptr(Error(err::kDatabase, "ORVALIS.Demo",
                                                                              "the generator stopped within " + table)));
        }
        batch = std::move(next.rows);
        at = 0;
      }
      batch->replay(at++, out);
      if (++sinceReport == 20000) {
        onRows(sinceReport, table);
        sinceReport = 0;
      }
      return true;
    });
    if (batch) pipe.recycle(std::move(batch));
    onRows(sinceReport, table);
    auto it = std::find_if(report.tables.begin(), report.tables.end(),
                           [&](const auto& entry) { return entry.first == table; });
    if (it == report.tables.end()) {
      report.tables.emplace_back(table, written);
    } else {
      it->second += written;
    }
  }
}

}  // namespace

}  // namespace demo

namespace {

// The completion mark: written last, so that its presence means the build
// ran to the end.
constexpr const char* kStateTable = "ORVDEMOSTATE";

// Every table of the connection's database (its current schema on
// PostgreSQL), upper-cased.
std::set<std::string> tableNames(Connection& connection) {
  const bool sqlite = schemaEngineOf(connection.provider()) == SchemaEngine::SQLite;
  Recordset rs = connection.query(sqlite ? "select name from sqlite_master where type = 'table'"
                                         : "select table_name from information_schema.tables "
                                           "where table_schema = current_schema() and table_type = 'BASE TABLE'");
  std::set<std::string> names;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) names.insert(upperTrim(rs.get(0).text()));
  return names;
}

void writeCompletionMark(Connection& connection, const DemoOptions& options, const DemoReport& report) {
  connection.execute(std::string("CREATE TABLE ") + kStateTable +
                     " (STATE_ID VARCHAR(10) NOT NULL, SEED VARCHAR(20), EMPLOYEES INTEGER, COMPANIES INTEGER, "
                     "AS_OF VARCHAR(10))");
  connection.execute(std::string("INSERT INTO ") + kStateTable + " VALUES ('COMPLETE', '" +
                     sqlQuote(std::to_string(options.seed)) + "', " + std::to_string(report.employees) + ", " +
                     std::to_string(report.companies) + ", '" + sqlQuote(report.asOf) + "')");
}

[[noreturn]] void refuseExisting(DemoState state) {
  if (state == DemoState::Complete) {
    throw Error(err::kDatabase, "ORVALIS.Demo",
                "the database already holds the demo database (use --replace to drop and recreate it)");
  }
  throw Error(err::kDatabase, "ORVALIS.Demo",
              "the database holds an unfinished HR schema: a demo-db run that stopped before the end, or a "
              "schema without demo data (use --replace to drop and rebuild it)");
}

// The SQLite file and the journals SQLite keeps beside it.
void removeDatabaseFiles(const std::filesystem::path& path, bool withMain) {
  std::vector<std::string> names = {"-journal", "-wal", "-shm"};
  if (withMain) names.insert(names.begin(), "");
  for (const std::string& suffix : names) {
    std::filesystem::path p = path;
    p += suffix;
    if (::unlink(p.c_str()) != 0 && errno != ENOENT) throw fileError("cannot delete", p, errno);
  }
}

// Flushes a file (or a folder's entries) to the disk.
void syncFile(const std::filesystem::path& path, bool folder) {
  const int fd = ::open(path.c_str(), folder ? O_RDONLY | O_DIRECTORY : O_RDWR);
  if (fd < 0) throw fileError("cannot open", path, errno);
  const int rc = ::fsync(fd);
  const int error = errno;
  ::close(fd);
  if (rc != 0) throw fileError("cannot sync", path, error);
}

// PostgreSQL: the primary keys of the schema's tables in the current
// schema, as statements that put each back as it was. A key built once
// over the loaded rows costs a sort; kept during the load it costs a
// search of the index for every row.
std::vector<std::string> dropPrimaryKeys(Connection& connection) {
  Recordset rs = connection.query(
      "select c.relname, k.conname, pg_get_constraintdef(k.oid) from pg_constraint k "
      "join pg_class c on c.oid = k.conrelid "
      "where k.contype = 'p' and k.connamespace = current_schema()::regnamespace and k.conparentid = 0 "
      "order by c.relname");
  std::set<std::string> ours;
  for (const TableDef& t : schemaModel().tables) ours.insert(lcase(t.name));
  std::vector<std::pair<std::string, std::string>> keys;  // table, constraint
  std::vector<std::string> restore;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
    const std::string table = rs.get(0).text();
    if (!ours.count(table)) continue;
    const std::string name = rs.get(1).text();
    keys.emplace_back(table, name);
    restore.push_back("ALTER TABLE " + quotedIdentifier(table) + " ADD CONSTRAINT " + quotedIdentifier(name) + " " +
                      rs.get(2).text());
  }
  for (const auto& [table, name] : keys) {
    connection.execute("ALTER TABLE " + quotedIdentifier(table) + " DROP CONSTRAINT " + quotedIdentifier(name));
  }
  return restore;
}

long long databaseSize(Connection& connection) {
  try {
    std::string sql = schemaEngineOf(connection.provider()) == SchemaEngine::SQLite
                          ? "select page_count * page_size from pragma_page_count(), pragma_page_size()"
                          : "select pg_database_size(current_database())";
    Recordset rs = connection.query(sql);
    if (rs.eof()) return -1;
    return static_cast<long long>(rs.get(0).toDouble());
  } catch (const Error&) {
    return -1;
  }
}

}  // namespace

long DemoReport::totalRows() const {
  long total = 0;
  for (const auto& [table, rows] : tables) total += rows;
  return total;
}

long DemoReport::rowsOf(const std::string& table) const {
  for (const auto& [name, rows] : tables) {
    if (name == table) return rows;
  }
  return 0;
}

DemoReport buildDemoDatabase(Connection& connection, const DemoOptions& options) {
  using Clock = std::chrono::steady_clock;
  const auto started = Clock::now();
  if (options.employees < options.companies || options.companies < 1) {
    throw Error(err::kInvalidProcedureCall, "ORVALIS.Demo",
                "the demo database needs at least one company and one employee per company");
  }
  if (schemaExists(connection)) {
    if (!options.replace) refuseExisting(demoState(connection));
    dropSchema(connection);
  }
  // A mark without a schema is stale; the new one is written at the end.
  if (tableNames(connection).count(kStateTable)) connection.execute(std::string("DROP TABLE ") + kStateTable);
  // Tables first, indexes after the load: building an index over sorted
  // keys is much faster than growing it row by row.
  SchemaLayout layout;
  layout.partitionByCompany = options.partitionByCompany;
  if (layout.partitionByCompany) {
    for (int c = 0; c < options.companies; ++c) layout.companies.push_back(demo::companyCode(c));
  }
  createSchemaTables(connection, layout);
  const bool sqlite = schemaEngineOf(connection.provider()) == SchemaEngine::SQLite;
  // SQLite cannot add a primary key to a table; there the rows go in key
  // order, so keeping the key costs little.
  const std::vector<std::string> primaryKeys = sqlite ? std::vector<std::string>{} : dropPrimaryKeys(connection);
  std::string cacheSize;
  if (sqlite) {
    Recordset rs = connection.query("PRAGMA cache_size");
    cacheSize = rs.eof() ? "-2000" : rs.get(0).text();
    // 32 MB while loading: the rows go in key order, so a larger cache
    // buys nothing measurable.
    connection.execute("PRAGMA cache_size = -32768");
  }

  auto progress = [&](double share, const std::string& table) {
    if (options.progress) options.progress(std::min(1.0, share), table);
  };
  progress(0, "generating");

  demo::Context ctx = demo::makeContext(options.seed, (options.asOf ? *options.asOf : clock::now()).datePart().days());
  ctx.nextNote = demo::kSharedNotes + 1;

  // The companies are drawn two at a time, on this thread and another
  // (each company's draws are its own), then numbered in order.
  std::vector<demo::Company> companies(static_cast<size_t>(options.companies));
  auto share = [&](int c) {
    return options.employees / options.companies + (c < options.employees % options.companies ? 1 : 0);
  };
  auto drawEvery = [&](int first) {
    for (int c = first; c < options.companies; c += 2) {
      companies[static_cast<size_t>(c)] = demo::drawCompany(ctx, c, share(c));
    }
  };
  if (options.companies > 1) {
    std::exception_ptr failure;
    std::thread second([&] {
      try {
        drawEvery(1);
      } catch (...) {
        failure = std::current_exception();
      }
    });
    try {
      drawEvery(0);
    } catch (...) {
      second.join();
      throw;
    }
    second.join();
    if (failure) std::rethrow_exception(failure);
  } else {
    drawEvery(0);
  }
  double estimate = 0;
  for (int c = 0; c < options.companies; ++c) {
    demo::Company& co = companies[static_cast<size_t>(c)];
    demo::numberCompany(ctx, co);
    const int share = static_cast<int>(co.employees.size());
    co.auditRows = options.auditRows < 0
                       ? std::max<long>(50, static_cast<long>(share) / 2)
                       : options.auditRows / options.companies + (c < options.auditRows % options.companies ? 1 : 0);
    estimate += 11.5 * static_cast<double>(co.employees.size()) + 3.0 * static_cast<double>(co.posts.size()) +
                static_cast<double>(co.absences.size()) + static_cast<double>(co.auditRows) + 6000;
  }

  DemoReport report;
  report.generateSeconds = std::chrono::duration<double>(Clock::now() - started).count();
  const auto loaded = Clock::now();
  report.asOf = DateTime::fromDays(ctx.asOf).iso();
  report.companies = options.companies;
  report.employees = options.employees;
  double written = 0;
  auto onRows = [&](long rows, const std::string& table) {
    written += static_cast<double>(rows);
    progress(written / estimate, table);
  };

  // The generator draws the rows on a thread of its own while this one
  // writes them: on two cores the drawing costs no time.
  demo::RowPipe pipe;
  DemoDefects defects;
  std::thread generator([&] {
    try {
      demo::Writer writer(pipe);
      demo::writeSharedTables(writer, ctx, companies);
      for (const demo::Company& co : companies) {
        demo::writeReferenceTables(writer, ctx, co);
        demo::writePeopleTables(writer, ctx, co, defects);
        demo::writeTrainingTables(writer, ctx, co);
        demo::writeCheckLists(writer, ctx, co);
      }
      pipe.finish(nullptr);
    } catch (const demo::RowPipe::Cancelled&) {
      pipe.finish(nullptr);
    } catch (...) {
      pipe.finish(std::current_exception());
    }
  });
  try {
    connection.begin();
    demo::loadRows(connection, pipe, report, onRows);
    generator.join();
    connection.commit();
  } catch (...) {
    if (generator.joinable()) {
      pipe.cancel();
      generator.join();
    }
    try {
      connection.rollback();
    } catch (...) {
      // Report the first failure.
    }
    throw;
  }
  report.defects = defects;
  report.loadSeconds = std::chrono::duration<double>(Clock::now() - loaded).count();
  std::vector<demo::Company>().swap(companies);  // the index sorts want the memory
  progress(1, "indexing");
  const auto indexing = Clock::now();
  // PostgreSQL: the index builds sort in memory instead of in temporary
  // files (a third less time for the large ones).
  if (!sqlite) connection.execute("SET maintenance_work_mem = '256MB'");
  // SQLite sorts an index's keys in runs as large as the page cache and
  // merges them: runs of 1 MB stay in the processor's caches, and the
  // index builds take a third less time than with 32 MB runs.
  if (sqlite) connection.execute("PRAGMA cache_size = -1024");
  inTransaction(connection, [&] {
    for (const std::string& key : primaryKeys) connection.execute(key);
  });
  createSchemaIndexes(connection);
  if (!sqlite) connection.execute("RESET maintenance_work_mem");
  if (sqlite) {
    connection.execute("ANALYZE");
    connection.execute("PRAGMA cache_size = " + cacheSize);
    // A file shared by readers and writers: readers never wait for a writer.
    connection.execute("PRAGMA journal_mode = WAL");
  } else {
    for (const TableDef& t : schemaModel().tables) connection.execute("ANALYZE " + t.name);
  }
  writeCompletionMark(connection, options, report);
  report.indexSeconds = std::chrono::duration<double>(Clock::now() - indexing).count();
  progress(1, "done");

  report.databaseBytes = databaseSize(connection);
  report.seconds = std::chrono::duration<double>(Clock::now() - started).count();
  return report;
}

DemoState demoState(Connection& connection) {
  if (!schemaExists(connection)) return DemoState::Absent;
  if (!tableNames(connection).count(kStateTable)) return DemoState::Unfinished;
  Recordset rs =
      connection.query(std::string("select count(*) from ") + kStateTable + " where STATE_ID = 'COMPLETE'");
  return !rs.eof() && rs.get(0).toDouble() > 0 ? DemoState::Complete : DemoState::Unfinished;
}

DemoReport buildDemoDatabaseFile(const std::filesystem::path& path, const DemoOptions& options) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) throw fileError("cannot build the demo database at", path, EISDIR);
  if (!options.replace && std::filesystem::file_size(path, ec) > 0 && !ec) {
    auto existing = openConnection("sqlite:" + path.string());
    if (schemaExists(*existing)) refuseExisting(demoState(*existing));
    if (!tableNames(*existing).empty()) {
      throw Error(err::kDatabase, "ORVALIS.Demo",
                  path.string() + " holds other tables; demo-db writes a whole database file "
                  "(use --replace to replace the file)");
    }
  }
  if (path.has_parent_path()) {
    std::filesystem::create_directories(path.parent_path(), ec);
    if (ec) throw fileError("cannot create folder", path.parent_path(), ec.value());
  }
  std::filesystem::path partial = path;
  partial += ".partial";
  removeDatabaseFiles(partial, true);  // what a stopped build left
  DemoReport report;
  try {
    auto connection = openConnection("sqlite:" + partial.string());
    DemoOptions fresh = options;
    fresh.replace = false;
    // The file is thrown away unless the build completes, so the build
    // needs neither a rollback journal nor a sync per commit, and no other
    // connection may look at it meanwhile. The whole file is synced once
    // before it is renamed into place.
    connection->execute("PRAGMA locking_mode = EXCLUSIVE");
    connection->execute("PRAGMA journal_mode = OFF");
    connection->execute("PRAGMA synchronous = OFF");
    report = buildDemoDatabase(*connection, fresh);
    connection.reset();
    syncFile(partial, false);
  } catch (...) {
    try {
      removeDatabaseFiles(partial, true);
    } catch (...) {
      // Report the build's failure.
    }
    throw;
  }
  // The old file's journals would be played back into the new file.
  removeDatabaseFiles(path, false);
  if (::rename(partial.c_str(), path.c_str()) != 0) throw fileError("cannot replace", path, errno);
  syncFile(path.has_parent_path() ? path.parent_path() : std::filesystem::path("."), true);
  return report;
}

std::string demoSummary(const DemoReport& report) {
  std::vector<std::pair<std::string, long>> tables = report.tables;
  std::stable_sort(tables.begin(), tables.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
  auto number = [](long long n) {
    std::string digits = std::to_string(n), out;
    for (size_t i = 0; i < digits.size(); ++i) {
      if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
      out += digits[i];
    }
    return out;
  };
  std::string text = "wrote " + number(report.totalRows()) + " rows in " + std::to_string(tables.size()) +
                     " tables for " + number(report.employees) + " employees in " +
                     std::to_string(report.companies) + " companies as of " + report.asOf + " (";
  for (size_t i = 0; i < tables.size() && i < 8; ++i) {
    text += (i ? ", " : "") + tables[i].first + " " + number(tables[i].second);
  }
  char tail[160];
  std::snprintf(tail, sizeof tail, ", ...) in %.1f s (generate %.1f, load %.1f, index %.1f)", report.seconds,
                report.generateSeconds, report.loadSeconds, report.indexSeconds);
  text += tail;
  if (report.databaseBytes >= 0) {
    std::snprintf(tail, sizeof tail, "; database %.1f MB", static_cast<double>(report.databaseBytes) / 1048576.0);
    text += tail;
  }
  const DemoDefects& d = report.defects;
  text += "; deliberate defects: " + number(d.hesaPersonMissing) + " HESA person and " +
          number(d.hesaContractsMissing) + " contract records missing, " + number(d.hesaIdMissing) +
          " HESA ids missing, " + number(d.hesaEmptyFields) + " empty and " + number(d.hesaInvalidCodes) +
          " invalid HESA codes, " + number(d.genderMissing) + " genders and " + number(d.birthDateMissing) +
          " birth dates missing";
  return text;
}

}  // namespace orvalis
