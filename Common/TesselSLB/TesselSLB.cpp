// Both processes. The module's plain exports: the log for its callers, and the server side of the
// pipe for the program that hosts the broker.
#include <windows.h>

#include <atomic>
#include <memory>
#include <string>

#include "TesselHost.h"
#include "TesselSLB/BrokerAddress.h"
#include "TesselSLB/ModuleDirectory.h"
#include "TesselTrace.h"
#include "UTILITY/JbPipe.h"
#include "logging/Log.h"

namespace {

// What lasts from InitComm to UninitComm. A request belongs to the channel that it came through.
struct Channel {
  const std::shared_ptr<IJbPipe> pipe = std::make_shared<CJbPipe>();
  std::uint32_t connectTimeout = 0;
  std::wstring pendingMessage;
};

// Every call takes a reference of its own, so UninitComm may come at any moment.
std::atomic<std::shared_ptr<Channel>> currentChannel;

std::wstring SourceText(const wchar_t* source) {
  if (source == nullptr) return {};
  if (!IS_INTRESOURCE(source)) return source;
  const wchar_t* resource = nullptr;
  const int length = ::LoadStringW(
      GetModuleInstance(), static_cast<UINT>(reinterpret_cast<ULONG_PTR>(source)),
      reinterpret_cast<wchar_t*>(&resource), 0 /*gives the resource itself*/);
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
    currentChannel.store(channel);  // the channel before, if any, is closed
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
