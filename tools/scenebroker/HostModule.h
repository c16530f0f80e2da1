// SceneBroker. The module, loaded at run time as any host does.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <type_traits>

class HostModule {
 public:
  // Throws std::runtime_error when it cannot be loaded.
  explicit HostModule(const std::wstring& path);

  // Throws std::runtime_error when the module has no such export.
  template <class Function>
  void Bind(Function& function, const char* name) const {
    function = reinterpret_cast<Function>(FindExport(name));
  }

 private:
  struct Closer {
    void operator()(HMODULE module) const { ::FreeLibrary(module); }
  };
  // Never null.
  void* FindExport(const char* name) const;

  std::unique_ptr<std::remove_pointer_t<HMODULE>, Closer> module_;
};
