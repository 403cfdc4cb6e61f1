#include "data/write_transaction.h"

#include <exception>

#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "runtime/error.h"

namespace orvalis {

namespace {

struct OpenTransaction {
  int depth = 0;
  bool failed = false;
};

OpenTransaction& open() {
  static thread_local OpenTransaction t;
  return t;
}

}  // namespace

bool WriteTransaction::active() { return open().depth > 0; }

WriteTransaction::WriteTransaction() {
  OpenTransaction& t = open();
  connection_ = gfncConnectionString("");
  if (t.depth == 0) {
    HREnvironment::require().ConnectionManager().BeginTrans(connection_);
    outermost_ = true;
    t.failed = false;
  }
  ++t.depth;
}

WriteTransaction::~WriteTransaction() {
  if (done_) return;
  OpenTransaction& t = open();
  --t.depth;
  if (!outermost_) {
    t.failed = true;
    return;
  }
  t.failed = false;
  try {
    if (Environment* env = HREnvironment::get()) env->ConnectionManager().RollbackTrans(connection_);
  } catch (...) {
    // The error that left the scope is the one to report; a connection
    // that cannot roll back has already lost the transaction.
  }
}

void WriteTransaction::commit() {
  if (done_) return;
  OpenTransaction& t = open();
  if (!outermost_) {
    done_ = true;
    --t.depth;
    return;
  }
  if (t.failed) {
    // Leave through the destructor's rollback.
    throw Error(err::kDatabase, "ORVALIS",
                "The transaction was rolled back: part of its work failed");
  }
  HREnvironment::require().ConnectionManager().CommitTrans(connection_);
  done_ = true;
  --t.depth;
}

}  // namespace orvalis
