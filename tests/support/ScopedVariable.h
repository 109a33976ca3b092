// A variable of the environment for the length of a scope.
#ifndef KR_TESTS_SCOPEDVARIABLE_H
#define KR_TESTS_SCOPEDVARIABLE_H

#include <cstdlib>
#include <optional>
#include <string>

// Sets or removes it, and puts it back as it was.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    Set(value);
  }
  ~ScopedVariable() { Set(before_); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void Set(const std::optional<std::string>& value) const {
#ifdef _WIN32
    _putenv_s(name_, value ? value->c_str() : "");
#else
    if (value) {
      setenv(name_, value->c_str(), 1);
    } else {
      unsetenv(name_);
    }
#endif
  }

  const char* name_;
  std::optional<std::string> before_;
};

#endif
