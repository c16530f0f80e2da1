// Runs in the client. The names of the files and of the mutex that starting or injecting a broker
// needs.
#pragma once

namespace wire {

// The launcher's path in the folder of 32-bit programs (CSIDL_PROGRAM_FILESX86).
inline constexpr wchar_t kLauncherInProgramFiles[] = L"Microsoft Silverlight\\sllauncher.exe";

// The package with the broker, and the injector. Both files are in the module's own folder.
inline constexpr wchar_t kBrokerPackage[] = L"SLBroker.xap";
inline constexpr wchar_t kInjector[] = L"slinject.exe";

// A client holds this mutex while it injects a broker. The name belongs to a logon session.
inline constexpr wchar_t kInjectionMutex[] = L"SLINJECT{EAE422D8-9B4C-4395-B672-8EDDCDBA226E}";

}  // namespace wire
