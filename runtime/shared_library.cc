#include "runtime/shared_library.h"

#include <dlfcn.h>

#include "runtime/error.h"

namespace orvalis {

namespace {

// dlerror()'s text, or a fallback when it has none.
std::string loaderReason() {
  const char* reason = dlerror();
  return reason != nullptr ? reason : "no reason given";
}

}  // namespace

SharedLibrary::SharedLibrary(std::string file, std::string what, long errorNumber, std::string source)
    : file_(std::move(file)), what_(std::move(what)), errorNumber_(errorNumber), source_(std::move(source)) {
  // Every symbol bound now: a library that cannot work fails here, whole,
  // rather than at its first call. Never closed: the tables of its
  // functions live as long as the process.
  handle_ = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    throw Error(errorNumber_, source_, "cannot load " + what_ + " (" + file_ + "): " + loaderReason());
  }
}

void* SharedLibrary::symbol(const char* name) const {
  dlerror();
  void* address = dlsym(handle_, name);
  if (address == nullptr) {
    throw Error(errorNumber_, source_,
                "cannot load " + what_ + " (" + file_ + "): it has no function " + name + ": " + loaderReason());
  }
  return address;
}

}  // namespace orvalis
