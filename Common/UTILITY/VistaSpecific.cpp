#include "UTILITY/VistaSpecific.h"

#include <sddl.h>

#include <memory>
#include <system_error>

#include "logging/Log.h"

namespace {

constexpr DWORD kSmallAclSize = 64;  // enough for an access list of one entry with a short SID

struct LocalFreeDeleter {
  void operator()(void* memory) const { ::LocalFree(memory); }
};

[[noreturn]] void ThrowLastError(const char* what) {
  throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), what);
}

// Security attributes without owner and group. The access lists are members, because the descriptor
// points to them.
struct LowIntegrityAttributes {
  LowIntegrityAttributes() {
    CopyMandatoryLabel();
    if (!AllowEveryone()) {
      LOG_ERROR("Could not create Dacl. LastError is %u", ::GetLastError());
      return;
    }
    attributes.nLength = sizeof(attributes);
    attributes.lpSecurityDescriptor = &descriptor;
    attributes.bInheritHandle = FALSE;
    published = &attributes;
  }
  // Not copyable, because the descriptor points into this object.
  LowIntegrityAttributes(const LowIntegrityAttributes&) = delete;
  LowIntegrityAttributes& operator=(const LowIntegrityAttributes&) = delete;

  void CopyMandatoryLabel() {
    PSECURITY_DESCRIPTOR converted = nullptr;
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(L"S:(ML;;NW;;;LW)", SDDL_REVISION_1,
                                                                &converted, nullptr /*size*/)) {
      ThrowLastError("ConvertStringSecurityDescriptorToSecurityDescriptorW");
    }
    const std::unique_ptr<void, LocalFreeDeleter> owner(converted);
    DWORD descriptorSize = sizeof(descriptor);
    DWORD saclSize = sizeof(sacl);
    DWORD none = 0;
    if (!::MakeAbsoluteSD(converted, &descriptor, &descriptorSize, nullptr /*dacl*/, &none,
                          AsAcl(sacl), &saclSize, nullptr /*owner*/, &none, nullptr /*group*/,
                          &none)) {
      ThrowLastError("MakeAbsoluteSD");
    }
  }

  bool AllowEveryone() {
    SID everyone = {
        SID_REVISION, 1 /*sub-authorities*/, SECURITY_WORLD_SID_AUTHORITY, {SECURITY_WORLD_RID}};
    return ::InitializeAcl(AsAcl(dacl), sizeof(dacl), ACL_REVISION) &&
           ::AddAccessAllowedAce(AsAcl(dacl), ACL_REVISION, FILE_ALL_ACCESS, &everyone) &&
           ::SetSecurityDescriptorDacl(&descriptor, TRUE /*present*/, AsAcl(dacl),
                                       FALSE /*defaulted*/);
  }

  static PACL AsAcl(DWORD (&storage)[kSmallAclSize / sizeof(DWORD)]) {
    return reinterpret_cast<PACL>(storage);
  }

  DWORD sacl[kSmallAclSize / sizeof(DWORD)] = {};
  DWORD dacl[kSmallAclSize / sizeof(DWORD)] = {};
  SECURITY_DESCRIPTOR descriptor = {};
  SECURITY_ATTRIBUTES attributes = {};
  SECURITY_ATTRIBUTES* published = nullptr;
};

}  // namespace

SECURITY_ATTRIBUTES* GetPipeSecurityAttributes() {
  static LowIntegrityAttributes process;
  return process.published;
}
