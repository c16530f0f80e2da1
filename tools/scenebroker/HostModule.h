// Part of SceneBroker. Loads the module, TesselSLB_x64.dll, at run time, and finds its exports.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <type_traits>

class HostModule {
 public:
  // Throws std::runtime_error if the module cannot be loaded.
  explicit HostModule(const std::wstring& path);

  // Sets `function` to the export with the name `name`. Throws std::runtime_error if there is no
  // such export.
  template <class Function>
  void Bind(Function& function, const char* name) const {
    function = reinterpret_cast<Function>(FindExport(name));
  }

 private:
  struct Closer {
    void operator()(HMODULE module) const { ::FreeLibrary(module); }
  };
  // Returns the address of the export, never null. Throws std::runtime_error if there is no such
  // export.
  void* FindExport(const char* name) const;

  std::unique_ptr<std::remove_pointer_t<HMODULE>, Closer> module_;
};
