// ScopedVariable: sets an environment variable for the life of the object,
// then puts back what was there before (or nothing).
//
// Thread rules: test code; the environment is the whole process's, so no
// other thread may read or change it meanwhile.
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace orrery::testing {

class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* old = getenv(name)) old_ = old;
    setenv(name, value, 1);
  }
  ~ScopedVariable() {
    if (old_)
      setenv(name_.c_str(), old_->c_str(), 1);
    else
      unsetenv(name_.c_str());
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace orrery::testing
