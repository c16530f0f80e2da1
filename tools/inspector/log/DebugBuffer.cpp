#include "tools/inspector/log/DebugBuffer.h"

#include <sddl.h>

#include <cstring>

#include "tools/inspector/InspectorError.h"

// The layout of the shared memory. The system defines it.
struct DebugBuffer::Content {
  static constexpr std::size_t kSize = 4096;

  DWORD process;
  char text[kSize - sizeof(DWORD)];
};

namespace {

// While a process writes a text, it keeps the shared objects open, even if their viewer has just
// ended. They then exist for a moment without a viewer, so a later attempt to create them works.
constexpr int kAttempts = 20;
constexpr DWORD kPauseMilliseconds = 50;

// Lets every process write into the buffer, also processes of low integrity and of other users.
class OpenToAll {
 public:
  OpenToAll() {
    ::ConvertStringSecurityDescriptorToSecurityDescriptorW(
        L"D:(A;;GA;;;WD)S:(ML;;NW;;;LW)", SDDL_REVISION_1, &attributes_.lpSecurityDescriptor,
        nullptr /*size*/);
  }
  ~OpenToAll() { ::LocalFree(attributes_.lpSecurityDescriptor); }
  OpenToAll(const OpenToAll&) = delete;
  OpenToAll& operator=(const OpenToAll&) = delete;

  SECURITY_ATTRIBUTES* Get() { return &attributes_; }

 private:
  SECURITY_ATTRIBUTES attributes_ = {sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE /*inherit*/};
};

// Returns an empty handle if the object cannot be made or exists already.
tools::Handle IfNew(HANDLE made) {
  const DWORD error = ::GetLastError();
  tools::Handle object(made);
  if (error == ERROR_ALREADY_EXISTS) object.reset();
  return object;
}

}  // namespace

DebugBuffer::DebugBuffer() {
  for (int attempt = 1; !TryToTake(); ++attempt) {
    if (attempt == kAttempts) {
      throw InspectorError(
          ExitCode::kFailed,
          "cannot show the log: another program already shows the debugger output of this logon "
          "session",
          "close it (another tessel log, or a viewer such as DebugView)");
    }
    ::Sleep(kPauseMilliseconds);
  }
  ::SetEvent(free_.get());
}

// A process may be about to write. It must not wait for a viewer that has ended.
DebugBuffer::~DebugBuffer() { ::SetEvent(free_.get()); }

bool DebugBuffer::TryToTake() {
  OpenToAll security;
  free_ = IfNew(::CreateEventW(security.Get(), FALSE /*manual*/, FALSE, L"DBWIN_BUFFER_READY"));
  filled_ = IfNew(::CreateEventW(security.Get(), FALSE /*manual*/, FALSE, L"DBWIN_DATA_READY"));
  buffer_ = IfNew(::CreateFileMappingW(INVALID_HANDLE_VALUE, security.Get(), PAGE_READWRITE,
                                       0 /*size, high part*/, Content::kSize, L"DBWIN_BUFFER"));
  if (free_ && filled_ && buffer_) {
    content_.reset(static_cast<const Content*>(
        ::MapViewOfFile(buffer_.get(), FILE_MAP_READ, 0 /*offset*/, 0, 0 /*all*/)));
  }
  if (content_) return true;
  for (tools::Handle* const object : {&free_, &filled_, &buffer_}) object->reset();
  return false;
}

DebugText DebugBuffer::Take() {
  DebugText taken = {content_->process,
                     {content_->text, ::strnlen(content_->text, sizeof(content_->text))}};
  ::SetEvent(free_.get());
  return taken;
}
