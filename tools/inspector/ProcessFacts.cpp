#include "tools/inspector/ProcessFacts.h"

#include <cstddef>

#include "tools/shared/ConsoleText.h"
#include "tools/shared/Handle.h"

namespace {

std::wstring PathOf(HANDLE process) {
  std::wstring path(32768, L'\0');
  auto length = static_cast<DWORD>(path.size());
  if (!::QueryFullProcessImageNameW(process, 0 /*flags*/, path.data(), &length)) return {};
  path.resize(length);
  return path;
}

// A 32-bit process on 64-bit Windows is the only kind that runs under WOW64. This program is a
// 64-bit program, so the system is always a 64-bit one.
std::optional<bool> Is64Bit(HANDLE process) {
  BOOL isWow64 = FALSE;
  if (!::IsWow64Process(process, &isWow64)) return std::nullopt;
  return !isWow64;
}

std::optional<DWORD> IntegrityOf(HANDLE process) {
  HANDLE opened = nullptr;
  if (!::OpenProcessToken(process, TOKEN_QUERY, &opened)) return std::nullopt;
  const tools::Handle token(opened);
  alignas(TOKEN_MANDATORY_LABEL)
      std::byte buffer[sizeof(TOKEN_MANDATORY_LABEL) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  if (!::GetTokenInformation(token.get(), TokenIntegrityLevel, buffer, sizeof(buffer), &size)) {
    return std::nullopt;
  }
  PSID const sid = reinterpret_cast<const TOKEN_MANDATORY_LABEL*>(buffer)->Label.Sid;
  return *::GetSidSubAuthority(sid, *::GetSidSubAuthorityCount(sid) - 1u);
}

}  // namespace

ProcessFacts ReadProcessFacts(DWORD id) {
  const tools::Handle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
  if (!process) return {id, {}, {}, {}};
  return {id, PathOf(process.get()), Is64Bit(process.get()), IntegrityOf(process.get())};
}

std::string ProcessText(const ProcessFacts& process) {
  return "process " + std::to_string(process.id) + " (" +
         (process.path.empty() ? "this user may not open it" : tools::PrintablePath(process.path)) +
         ')';
}

std::string IntegrityName(DWORD integrity) {
  if (integrity < SECURITY_MANDATORY_LOW_RID) return "untrusted";
  if (integrity < SECURITY_MANDATORY_MEDIUM_RID) return "low";
  if (integrity < SECURITY_MANDATORY_HIGH_RID) return "medium";
  return integrity < SECURITY_MANDATORY_SYSTEM_RID ? "high" : "system";
}
