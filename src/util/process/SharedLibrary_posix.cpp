#include <dlfcn.h>

#include "util/process/SharedLibrary.h"

std::string SharedLibrary::FileName(const std::string& name) {
  return "lib" + name + ".so";
}

// All symbols at once: a library that is not whole must not fail in the middle of a run.
bool SharedLibrary::Load(const std::string& path, std::string& error) {
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ != nullptr) return true;
  const char* const reason = dlerror();
  error = reason != nullptr ? reason : "unknown error";
  return false;
}

void SharedLibrary::Unload() {
  if (handle_ != nullptr) dlclose(handle_);
  handle_ = nullptr;
}

void* SharedLibrary::Find(const char* name) const {
  return handle_ != nullptr ? dlsym(handle_, name) : nullptr;
}
