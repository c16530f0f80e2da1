#include "tools/inspector/doctor/StartChecks.h"

#include <windows.h>

#include <optional>

#include "tessel/Text.h"
#include "tools/inspector/ModuleFile.h"
#include "tools/inspector/StartupPaths.h"
#include "tools/shared/ConsoleText.h"
#include "tools/shared/Handle.h"
#include "wire/StartupFiles.h"

namespace {

using std::filesystem::path;

std::string PathText(const path& file) { return tools::PrintablePath(file.wstring()); }

bool IsFile(const path& file) {
  std::error_code error;
  return std::filesystem::is_regular_file(file, error);
}

Step FileStep(const std::string& name, const path& file, const std::string& cure) {
  Step step = {
      name, Step::State::kFound, PathText(file), "", {{"path", tessel::Narrow(file.wstring())}}};
  if (IsFile(file)) return step;
  step.state = Step::State::kBroken;
  step.finding = "there is no file " + step.finding;
  step.cure = cure;
  return step;
}

}  // namespace

Step CheckModule(const path& module) {
  Step step = FileStep("module", module, "put TesselSLB_x64.dll there, or name it with --module");
  if (step.state == Step::State::kBroken) return step;
  const std::optional<std::string> version = VersionOf(module.wstring());
  if (!version) {
    step.state = Step::State::kBroken;
    step.finding += " has no version, so it is damaged or another file";
    step.cure = "put TesselSLB_x64.dll there, or name it with --module";
    return step;
  }
  step.finding += ", version " + *version;
  step.facts["version"] = *version;
  return step;
}

Step CheckLauncher() {
  return FileStep(
      "launcher", LauncherPath(),
      "install Silverlight, whose launcher starts brokers, or start the broker yourself");
}

Step CheckPackage(const path& module) {
  return FileStep("package", path(module).replace_filename(wire::kBrokerPackage),
                  "put SLBroker.xap beside the module; the launcher runs it");
}

Step CheckInjector(const path& module) {
  return FileStep("injector", path(module).replace_filename(wire::kInjector),
                  "put slinject.exe beside the module");
}

Step CheckInjectionLock() {
  Step step = {"injection lock", Step::State::kFound, "free", ""};
  const tools::Handle mutex(::OpenMutexW(SYNCHRONIZE, FALSE /*inherit*/, wire::kInjectionMutex));
  if (!mutex) {
    if (::GetLastError() == ERROR_FILE_NOT_FOUND) return step;
    step.state = Step::State::kNote;
    step.finding = "this user may not look at it";
    return step;
  }
  const DWORD wait = ::WaitForSingleObject(mutex.get(), 0 /*ms*/);
  if (wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED) {
    ::ReleaseMutex(mutex.get());
    return step;
  }
  step.state = Step::State::kBroken;
  step.finding = "another client holds it, because it injects a broker now";
  step.cure = "wait until that injection ends (about 10 s), or end the client that hangs in it";
  return step;
}
