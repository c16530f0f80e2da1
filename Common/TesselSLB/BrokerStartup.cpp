#include "TesselSLB/BrokerStartup.h"

#include <shlobj.h>
#include <shlwapi.h>

#include <algorithm>
#include <memory>
#include <new>

#include "TesselCodes.h"
#include "TesselSLB/BrokerPipe.h"
#include "TesselSLB/HiddenProcess.h"
#include "TesselSLB/ModuleDirectory.h"
#include "logging/Log.h"
#include "wire/StartupFiles.h"
#include "wire/Timeouts.h"

namespace {

std::wstring Quoted(std::wstring_view text) {
  return std::wstring(L"\"").append(text).append(L"\"");
}

std::wstring LaunchOrigin(DWORD scheme, std::wstring_view address) {
  if (scheme != SL_TAILORED_URI) return GetBrokerOrigin(scheme);
  std::wstring origin = Quoted(std::wstring(address) + L"/TailoredBroker/SLBroker.xap");
  std::replace(origin.begin(), origin.end(), L'%', L'_');
  return origin;
}

}  // namespace

std::wstring GetBrokerOrigin(DWORD scheme) {
  switch (scheme) {
    case SL_HTTP_URI:
      return Quoted(L"" TESSEL_HTTP_ORIGIN);
    case SL_HTTPS_URI:
      return Quoted(L"" TESSEL_HTTPS_ORIGIN);
    case SL_FILE_URI:
      return Quoted(L"file://" + GetModuleDirectory() + wire::kBrokerPackage);
    default:
      LOG_ERROR("Unknown URI scheme %i", scheme);
      return {};
  }
}

bool FindLauncher(std::wstring& path) {
  const std::unique_ptr<wchar_t[]> buffer(new (std::nothrow) wchar_t[MAX_PATH + 1]());
  if (!buffer) {
    LOG_ERROR("GetBuffer failed");
    return false;
  }
  if (FAILED(::SHGetFolderPathW(nullptr /*window*/, CSIDL_PROGRAM_FILESX86, nullptr /*token*/,
                                SHGFP_TYPE_CURRENT, buffer.get()))) {
    LOG_ERROR("Cannot get program files folder");
    return false;
  }
  if (!::PathAppendW(buffer.get(), wire::kLauncherInProgramFiles) ||
      !::PathFileExistsW(buffer.get())) {
    LOG_ERROR("Cannot find sllauncher.exe");
    return false;
  }
  path = buffer.get();
  return true;
}

bool LaunchBroker(DWORD scheme, std::wstring_view address) {
  const std::wstring package = PathBesideModule(wire::kBrokerPackage);
  std::wstring launcher;
  if (!FindLauncher(launcher)) {
    // The texts that the module logs are part of its interface, because users search for them. Keep
    // every text letter for letter, even one that looks like a misspelling.
    LOG_ERROR("Cannot sllauncher.exe");
    return false;
  }
  const std::wstring origin = LaunchOrigin(scheme, address);
  if (origin.empty()) {
    LOG_ERROR("Cannot get URI scheme as string");
    return false;
  }
  const std::wstring commandLine =
      L"sllauncher.exe /overwrite /emulate:" + Quoted(package) + L" /origin:" + origin;
  LOG_INFO("sllauncher.exe=%ls", launcher.c_str());
  LOG_INFO("cmdLine=%ls", commandLine.c_str());
  {  // This block closes the launcher's handles at once: nothing waits for the launcher to end.
    const auto started = StartHidden(launcher, commandLine, GetModuleDirectory().c_str());
    if (!started) {
      LOG_ERROR("CreateProcess failed, slLauncher=%ls cmdLine=%ls", launcher.c_str(),
                commandLine.c_str());
      return false;
    }
    LOG_INFO("Created sllauncher process with pid %i", started->id);
  }
  return BrokerPipeExists(GetBrokerPipeName(scheme, address),
                          wire::kLaunchedPipeTimeoutMilliseconds);
}
