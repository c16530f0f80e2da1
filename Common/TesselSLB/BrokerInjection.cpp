#include "TesselSLB/BrokerInjection.h"

#include <string>

#include "TesselSLB/HiddenProcess.h"
#include "TesselSLB/ModuleDirectory.h"
#include "TesselSLB/NudgeWindow.h"
#include "TesselSilverlight.h"
#include "UTILITY/VistaSpecific.h"
#include "internal/SafeObject.h"
#include "logging/Log.h"
#include "wire/StartupFiles.h"
#include "wire/Timeouts.h"

namespace {

bool IsUsable(HWND window) { return window != nullptr && ::IsWindow(window); }

class MutexOwnership {
 public:
  explicit MutexOwnership(HANDLE mutex) : mutex_(mutex) {}
  ~MutexOwnership() { ::ReleaseMutex(mutex_); }
  MutexOwnership(const MutexOwnership&) = delete;
  MutexOwnership& operator=(const MutexOwnership&) = delete;

 private:
  const HANDLE mutex_;
};

bool EndedWell(HANDLE injector) {
  DWORD exitCode = 0;
  if (!::GetExitCodeProcess(injector, &exitCode) || exitCode != 0) {
    LOG_ERROR("Silverlight injector failed, exit code =%d", exitCode);
    return false;
  }
  // This line reports a success, but has the level ERROR on purpose: clients depend on the level.
  LOG_ERROR("Silverlight injector succeeded");
  return true;
}

bool AwaitInjector(HANDLE injector, HWND window) {
  for (int round = 0; round < wire::kInjectorRounds; ++round) {
    NudgeWindow(window, round != 0 /*handle maximised*/);
    if (::WaitForSingleObject(injector, wire::kInjectorRoundMilliseconds) == WAIT_OBJECT_0) {
      return EndedWell(injector);
    }
  }
  LOG_ERROR("Silverlight injector timedout");
  return false;
}

}  // namespace

int InjectBroker(HWND window) {
  if (!IsUsable(window)) {
    LOG_ERROR("Invalid window");
    return SL_INVALID_ARGUMENT;
  }
  const SafeHandle mutex(
      ::CreateMutexW(GetPipeSecurityAttributes(), FALSE /*owned*/, wire::kInjectionMutex));
  if (!mutex) {
    LOG_ERROR("Cannot create mutex");
    return SL_FAILURE;
  }
  const DWORD wait = ::WaitForSingleObject(mutex.Get(), wire::kInjectionMutexTimeoutMilliseconds);
  if (wait != WAIT_OBJECT_0 && wait != WAIT_ABANDONED) {
    LOG_ERROR("Cannot acquire mutex, WaitForSingleObject returned %x", wait);
    return SL_FAILURE;
  }
  const MutexOwnership ownership(mutex.Get());
  LOG_INFO("Mutex acquired");
  DWORD processId = 0;
  ::GetWindowThreadProcessId(window, &processId);
  return RunInjector(window, processId);
}

int RunInjector(HWND window, DWORD processId) {
  if (processId == 0 || !IsUsable(window)) {
    LOG_ERROR("Invalid arguments");
    return SL_INVALID_ARGUMENT;
  }
  const std::wstring injector = PathBesideModule(wire::kInjector);
  const std::wstring commandLine =
      L"slinject.exe --pid=" + std::to_wstring(static_cast<int>(processId));
  LOG_INFO("slinject.exe=%ls", injector.c_str());
  LOG_INFO("cmdLine=%ls", commandLine.c_str());
  const auto started = StartHidden(injector, commandLine, nullptr /*directory*/);
  if (!started) {
    LOG_ERROR("CreateProcess failed, cmdLine=%ls", commandLine.c_str());
    return SL_INJECTOR_NOT_STARTED;
  }
  LOG_INFO("Created slinject process with pid %i", started->id);
  ::Sleep(wire::kPauseAfterInjectorStartMilliseconds);
  return AwaitInjector(started->process.Get(), window) ? SL_SUCCESS : SL_INJECTION_FAILED;
}
