// Runs in the client and in the broker. The exported functions of TesselTrace.h and TesselHost.h.
// DTrace writes a caller's text to the log. All other functions are for the program that hosts the
// broker: the server's end of the pipe, and hidden windows that receive messages from any thread.
#include <windows.h>

#include <array>
#include <atomic>
#include <memory>
#include <string>

#include "TesselHost.h"
#include "TesselSLB/BrokerPipe.h"
#include "TesselSLB/ModuleDirectory.h"
#include "TesselTrace.h"
#include "UTILITY/JbPipe.h"
#include "logging/Log.h"

namespace {

// The state from InitComm to UninitComm. `pendingMessage` is a request that has arrived, but that
// ReadMessage has not yet returned to the host. Each channel has its own pending message, so that a
// new channel never returns a request of an old channel.
struct Channel {
  const std::shared_ptr<IJbPipe> pipe = std::make_shared<CJbPipe>();
  std::uint32_t connectTimeout = 0;
  std::wstring pendingMessage;
};

// Each call copies this pointer before it uses the channel. The copy keeps the channel alive, so
// another thread may call UninitComm at any moment.
std::atomic<std::shared_ptr<Channel>> currentChannel;

std::wstring SourceText(const wchar_t* source) {
  if (source == nullptr) return {};
  if (!IS_INTRESOURCE(source)) return source;
  const wchar_t* resource = nullptr;
  const int length =
      ::LoadStringW(GetModuleInstance(), static_cast<UINT>(reinterpret_cast<ULONG_PTR>(source)),
                    reinterpret_cast<wchar_t*>(&resource), 0 /*returns a pointer to the resource*/);
  return length > 0 ? std::wstring(resource, static_cast<std::size_t>(length)) : std::wstring();
}

int ReceiveFromClient(Channel& channel) {
  LOG_INFO("ReadMessage - Wait client to connect");
  std::uint32_t timedOut = 0;
  if (!channel.pipe->WaitClientToConnect(channel.connectTimeout, &timedOut)) {
    if (timedOut != 0) {
      LOG_INFO("ReadMessage - WaitClientToConnect timedout");
      return SL_CHANNEL_NO_CLIENT;
    }
    LOG_INFO("ReadMessage - WaitClientToConnect failed");
    return SL_CHANNEL_CANNOT_READ;
  }
  LOG_INFO("ReadMessage - Client connected");
  std::wstring message;
  if (!channel.pipe->ReadString(message)) {
    LOG_ERROR("ReadMessage - ReadString failed, prepare to pipe->DisconnectClient");
    channel.pipe->DisconnectClient();
    return SL_CHANNEL_CANNOT_READ;
  }
  LOG_INFO("ReadMessage - Message received");
  channel.pendingMessage = std::move(message);
  return SL_CHANNEL_SUCCESS;
}

int ReceiveMessage(Channel& channel) {
  int code = SL_CHANNEL_CLOSED;
  try {
    code = ReceiveFromClient(channel);
  } catch (const PipeException& failure) {
    LOG_ERROR("PipeException: '%s'", failure.Message());
  } catch (const PipeShutdownException&) {
    LOG_INFO("Pipe shotdown");
  }
  if (code == SL_CHANNEL_NO_CLIENT) {
    LOG_INFO("Timeout at reading from pipe");
  } else if (code != SL_CHANNEL_SUCCESS) {
    LOG_ERROR("Cannot read from pipe");
  }
  return code;
}

// One additional window and the callback that receives its messages. Only the thread that created
// the window changes the fields. Any thread may read `handle`, to post a message.
struct AdditionalWindow {
  std::atomic<HWND> handle = nullptr;
  std::atomic<SLWindowCallback> callback = nullptr;
};

std::array<AdditionalWindow, 10> additionalWindows;

// Returns the window with this index. Returns null and logs an error if the index has no window.
AdditionalWindow* ExistingWindow(unsigned long index) {
  if (index >= additionalWindows.size()) {
    LOG_ERROR("Index out of bounds");
    return nullptr;
  }
  if (additionalWindows[index].handle == nullptr) {
    LOG_ERROR("Window #%u not registered", index);
    return nullptr;
  }
  return &additionalWindows[index];
}

// Passes a message to the window's callback. Returns true if the callback has handled the message.
bool HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  // AdditionalWindow_Create stores the index plus one in the window. While the window is being
  // created, this value is still 0, so the index is out of bounds and no callback is called.
  const auto index = static_cast<ULONG_PTR>(::GetWindowLongPtrW(window, GWLP_USERDATA)) - 1;
  if (index >= additionalWindows.size()) return false;
  const AdditionalWindow& entry = additionalWindows[index];
  const SLWindowCallback callback = entry.callback;
  if (entry.handle != window || callback == nullptr) return false;
  LOG_ERROR("Prepare to call callback %#p (additional window #%u)", callback,
            static_cast<unsigned>(index));
  const auto result = static_cast<int>(callback(window, message, wparam, lparam));
  LOG_ERROR("Callback %#p returned %i", callback, result);
  return result != 0;
}

LRESULT CALLBACK Additional_WndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  // This log line and the two in HandleMessage have the level ERROR on purpose: clients depend on
  // the level.
  LOG_ERROR("Additional_WndProc called with %#p, %x, %Ii, %Ii", window, message, wparam, lparam);
  if (HandleMessage(window, message, wparam, lparam)) return 0;
  return ::DefWindowProcW(window, message, wparam, lparam);
}

// The class name contains the process id, so that no two processes register the same name.
const std::wstring& WindowClassName() {
  static const std::wstring name =
      L"SL_Additional_Wnd_Class_pid" + std::to_wstring(::GetCurrentProcessId()) + L"_";
  return name;
}

bool RegisterWindowClass() {
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.lpfnWndProc = &Additional_WndProc;
  windowClass.hInstance = GetModuleInstance();
  windowClass.lpszClassName = WindowClassName().c_str();
  if (::RegisterClassExW(&windowClass) != 0) return true;
  LOG_ERROR("Cannot register class name '%ls', get last error is %u", windowClass.lpszClassName,
            ::GetLastError());
  return false;
}

// Registers the window class once per process. Tries again only if an exception ended the previous
// attempt.
bool IsWindowClassRegistered() {
  static const bool registered = RegisterWindowClass();
  return registered;
}

}  // namespace

void DTrace(int level, const wchar_t* text) {
  if (text == nullptr) {
    LOG_ERROR("ERR: str is NULL in DTrace");
    return;
  }
  if (level < logging::kVerbose || level > logging::kError) level = logging::kVerbose;
  logging::WriteLog(logging::LogSite(__FILE__, __LINE__, level), "SL: %ls", text);
}

int __stdcall InitComm(unsigned long scheme, unsigned long connectTimeout, const wchar_t* source) {
  const std::wstring name = GetBrokerPipeName(scheme, SourceText(source));
  if (name.empty()) {
    LOG_ERROR("Cannot get pipe name");
    return SL_CHANNEL_CLOSED;
  }
  try {
    const auto channel = std::make_shared<Channel>();
    currentChannel.store(channel);  // closes the old channel, unless a call still uses it
    channel->pipe->SetPipeName(name);
    channel->pipe->SetAppendProcessId(false);
    if (!channel->pipe->CreateServerPipe(0 /*retry time-out*/, true /*first instance*/)) {
      LOG_ERROR("Cannot create pipe");
      return SL_CHANNEL_NOT_CREATED;
    }
    channel->connectTimeout = connectTimeout;
    return SL_CHANNEL_SUCCESS;
  } catch (const PipeShutdownException&) {
    LOG_INFO("Pipe shutdown");
  } catch (const PipeException& failure) {
    LOG_ERROR("PipeException: '%s'", failure.Message());
  }
  return SL_CHANNEL_CLOSED;
}

int __stdcall ReadMessage(wchar_t* buffer, unsigned long* size) {
  const std::shared_ptr<Channel> channel = currentChannel.load();
  if (!channel) {
    LOG_ERROR("Pipe not initialized");
    return SL_CHANNEL_NOT_INITIALIZED;
  }
  if (size == nullptr) {
    LOG_ERROR("Invalid arguments");
    return SL_CHANNEL_INVALID_ARGUMENT;
  }
  std::wstring& message = channel->pendingMessage;
  if (message.empty()) {
    const int code = ReceiveMessage(*channel);
    if (code != SL_CHANNEL_SUCCESS) return code;
  }
  if (*size < message.size() + 1) {
    *size = static_cast<unsigned long>(message.size() + 1);
    return SL_CHANNEL_BUFFER_TOO_SMALL;
  }
  if (buffer == nullptr) {
    LOG_ERROR("Invalid buffer");
    return SL_CHANNEL_INVALID_ARGUMENT;
  }
  message.copy(buffer, message.size());
  buffer[message.size()] = L'\0';
  message.clear();
  return SL_CHANNEL_SUCCESS;
}

int __stdcall WriteMessage(const wchar_t* message) {
  const std::shared_ptr<Channel> channel = currentChannel.load();
  if (!channel) {
    LOG_ERROR("WriteMessage - Pipe not initialized");
    return SL_CHANNEL_NOT_INITIALIZED;
  }
  if (message == nullptr) {
    LOG_ERROR("WriteMessage - Invalid arguments");
    return SL_CHANNEL_INVALID_ARGUMENT;
  }
  try {
    LOG_INFO("WriteMessage - prepare to write to pipe");
    const bool written = channel->pipe->WriteString(message);
    LOG_INFO("WriteMessage - prepare to pipe->DisconnectClient");
    channel->pipe->DisconnectClient();
    channel->pendingMessage.clear();
    if (written) {
      LOG_INFO("WriteMessage - exit with success");
      return SL_CHANNEL_SUCCESS;
    }
    LOG_ERROR("WriteMessage - Cannot write to pipe");
    return SL_CHANNEL_CANNOT_WRITE;
  } catch (const PipeShutdownException&) {
    LOG_INFO("WriteMessage - Pipe shutdown");
  } catch (const PipeException& failure) {
    LOG_ERROR("WriteMessage - PipeException: '%s'", failure.Message());
  }
  return SL_CHANNEL_CLOSED;
}

int __stdcall UninitComm() {
  std::shared_ptr<Channel> channel = currentChannel.load();
  if (!channel) {
    LOG_ERROR("Server pipe not init");
    return SL_CHANNEL_NOT_INITIALIZED;
  }
  try {
    channel->pipe->Shutdown(0 /*time-out*/);
  } catch (const PipeException& failure) {
    LOG_INFO("UninitComm PipeException: '%s'", failure.Message());
    return SL_CHANNEL_CLOSED;
  }
  currentChannel.compare_exchange_strong(channel, nullptr);
  return SL_CHANNEL_SUCCESS;
}

HWND __stdcall AdditionalWindow_Create(unsigned long index) {
  LOG_INFO("Create additional window #%u", index);
  if (index >= additionalWindows.size()) {
    LOG_ERROR("Too much windows added");
    return nullptr;
  }
  AdditionalWindow& entry = additionalWindows[index];
  if (entry.handle != nullptr) {
    LOG_ERROR("Window #%u allready registered with %#p and callback %#p", index,
              entry.handle.load(), entry.callback.load());
    return nullptr;
  }
  if (!IsWindowClassRegistered()) {
    LOG_ERROR("Window class is not registered");
    return nullptr;
  }
  entry.callback = nullptr;
  const HWND window = ::CreateWindowExW(
      0 /*extended style*/, WindowClassName().c_str(), L"" /*title*/, WS_POPUP, 0 /*x*/, 0 /*y*/,
      10 /*width*/, 10 /*height*/, nullptr /*parent*/, nullptr /*menu*/, GetModuleInstance(),
      reinterpret_cast<void*>(static_cast<ULONG_PTR>(index)));
  entry.handle = window;
  if (window == nullptr) {
    LOG_ERROR("Cannot create window");
    return nullptr;
  }
  ::SetWindowLongPtrW(window, GWLP_USERDATA, static_cast<LONG_PTR>(index) + 1);
  return window;
}

BOOL __stdcall AdditionalWindow_Destroy(unsigned long index) {
  LOG_INFO("Destroy additional window #%u", index);
  AdditionalWindow* const entry = ExistingWindow(index);
  if (entry == nullptr) return FALSE;
  ::DestroyWindow(entry->handle);
  entry->handle = nullptr;
  entry->callback = nullptr;
  return TRUE;
}

BOOL __stdcall AdditionalWindow_PostMessage(unsigned long index, UINT message, WPARAM wparam,
                                            LPARAM lparam) {
  LOG_INFO("Prepare to post message %u (WM_APP+%u) to additional window #%u", message,
           message - WM_APP, index);
  const AdditionalWindow* const entry = ExistingWindow(index);
  return entry != nullptr ? ::PostMessageW(entry->handle, message, wparam, lparam) : FALSE;
}

BOOL __stdcall AdditionalWindow_RegisterCallback(unsigned long index, SLWindowCallback callback) {
  LOG_INFO("Prepare to register callback %#p for additional window #%u", callback, index);
  AdditionalWindow* const entry = ExistingWindow(index);
  if (entry == nullptr) return FALSE;
  entry->callback = callback;
  return TRUE;
}
