// A C library loaded when it is first needed instead of when the program
// starts: the database clients and the spreadsheet writer. A run that never
// opens a PostgreSQL or ODBC connection, or never writes a workbook, never
// maps those libraries nor the TLS, Kerberos, LDAP and compression
// libraries they bring along; the dynamic loader's work for them was most
// of the tool's start.
//
// The library is found as the dynamic loader finds any library (its
// soname, e.g. "libpq.so.5", through the system's library path) and stays
// loaded until the process ends. Its functions are reached through a table
// whose members are typed from the library's own header, so every call
// through the table is checked as a direct call would be:
//
//   #define PQ_FUNCTIONS(X) X(PQexec) X(PQclear)
//   struct Libpq { PQ_FUNCTIONS(ORVALIS_LIBRARY_MEMBER) };
//   const Libpq& libpq() {
//     static const Libpq table = [] {
//       const SharedLibrary library("libpq.so.5", "the PostgreSQL client library", err::kClassNotRegistered, "PostgreSQL");
//       Libpq table;
//       PQ_FUNCTIONS(ORVALIS_LIBRARY_BIND)
//       return table;
//     }();
//     return table;
//   }
//
// A library that cannot be loaded, or lacks a function, raises an
// orvalis::Error with the given number and source and a one-line
// description: what was loaded, which file, and the dynamic loader's
// reason. A failed load is tried again on the next use.
#pragma once

#include <string>

namespace orvalis {

class SharedLibrary {
 public:
  // file: a soname or a path; what: the library as a message names it.
  SharedLibrary(std::string file, std::string what, long errorNumber, std::string source);

  // The address of the function name, as the function pointer type F.
  template <typename F>
  F function(const char* name) const {
    return reinterpret_cast<F>(symbol(name));
  }

  const std::string& file() const { return file_; }

 private:
  void* symbol(const char* name) const;

  std::string file_;
  std::string what_;
  long errorNumber_;
  std::string source_;
  void* handle_ = nullptr;
};

}  // namespace orvalis

// A member of a function table: the pointer to the library's function name.
#define ORVALIS_LIBRARY_MEMBER(name) decltype(&::name) name = nullptr;
// Fills that member of a local `table` from a local SharedLibrary `library`.
#define ORVALIS_LIBRARY_BIND(name) table.name = library.function<decltype(&::name)>(#name);
