// WriteTransaction: one unit of work on the HR database.
//
// The component's writes that belong together (a control parameter and the
// audit row that records it; an audit row and the counter number it takes)
// run inside one WriteTransaction, so that they are stored together or not
// at all. The first WriteTransaction on a thread begins the transaction on
// the current environment's HR connection (ConnectionManager::BeginTrans);
// one created while another is open joins it, since the databases do not
// nest transactions.
//
//   WriteTransaction tx;      // begins, or joins the open one
//   ... statements ...
//   tx.commit();              // commits when it began the transaction
//
// A WriteTransaction destroyed without commit() (an error left its scope)
// rolls back when it began the transaction; a joined one marks the open
// transaction as failed, and the outer commit() then rolls back and raises
// an error instead of storing half the work.
//
// Owned by the scope that creates it; per thread, like the host.
#pragma once

#include <string>

namespace orvalis {

class WriteTransaction {
 public:
  WriteTransaction();
  ~WriteTransaction();
  WriteTransaction(const WriteTransaction&) = delete;
  WriteTransaction& operator=(const WriteTransaction&) = delete;

  // Commits (outermost) or hands the work on to the open transaction
  // (joined). Raises when a joined unit failed; the work is then undone.
  void commit();

  // True when this object began the transaction.
  bool outermost() const { return outermost_; }

  // Whether a transaction is open on this thread.
  static bool active();

 private:
  bool outermost_ = false;
  bool done_ = false;
  std::string connection_;
};

}  // namespace orvalis
