#include "TesselSLB/BrokerRoundTrip.h"

#include "TesselSLB/BrokerInjection.h"
#include "TesselSLB/BrokerPipe.h"
#include "TesselSLB/BrokerStartup.h"
#include "UTILITY/JbPipe.h"
#include "logging/Log.h"
#include "wire/Addresses.h"
#include "wire/SearchOrder.h"
#include "wire/Timeouts.h"

namespace {

bool EnsureBroker(DWORD scheme, std::wstring_view address, const std::wstring& pipeName) {
  if (BrokerPipeExists(pipeName, 0 /*wait*/)) return true;
  if (!LaunchBroker(scheme, address)) return false;
  ::Sleep(wire::kPauseAfterLaunchMilliseconds);
  return true;
}

}  // namespace

std::wstring_view SourceUriOf(const SLElemData& record) {
  const wchar_t* address = record.sourceUri;
  return address != nullptr ? address : L"";
}

void BuildObjectRequest(wire::Command command, const SLElemData& record, JArchive& request) {
  request = JArchive();
  request << static_cast<int>(command) << static_cast<int>(record.processId)
          << static_cast<const wchar_t*>(record.objectId);
}

void BuildWindowRequest(wire::Command command, SLElemData& record, JArchive& request) {
  if (record.processId == 0) ::GetWindowThreadProcessId(record.hwnd, &record.processId);
  const bool hasId = ::SysStringLen(record.objectId) != 0;
  request = JArchive();
  request << static_cast<int>(command) << static_cast<int>(record.processId)
          << (hasId ? static_cast<const wchar_t*>(record.objectId) : L"");
}

int SendMessageToBroker(DWORD scheme, const JArchive& request, JArchive& answer,
                        std::wstring_view address) {
  LOG_INFO("SendMessageToBroker for %s scheme", wire::SchemeName(scheme));
  const std::wstring pipeName = GetBrokerPipeName(scheme, address);
  if (!EnsureBroker(scheme, address, pipeName)) {
    LOG_ERROR("Cannot start SLBroker process");
    return SL_BROKER_NOT_STARTED;
  }
  // A connection carries one request and one answer. The destructor of `pipe` closes the
  // connection.
  CJbPipe pipe;
  pipe.SetTimeout(wire::kPipeTimeoutMilliseconds);
  pipe.SetPipeName(pipeName);
  pipe.SetAppendProcessId(false);
  if (!pipe.ConnectToServerPipe(0 /*process id*/)) {
    LOG_ERROR("Cannot connect to SL server pipe");
    return SL_CANNOT_CONNECT;
  }
  std::wstring buffer;
  if (!pipe.WriteString(request.toString(buffer))) {
    LOG_ERROR("Cannot write to SL server pipe");
    return SL_CANNOT_CONNECT;
  }
  PipeMessage message;
  std::wstring_view text;
  if (!pipe.ReadString(message, text)) {
    LOG_ERROR("Cannot read from SL server pipe");
    return SL_CANNOT_READ;
  }
  answer.fromString(text);
  int status = 0;
  answer >> status;
  return status;
}

int SendMessageToBrokerAnyScheme(DWORD& scheme, const JArchive& request, JArchive& answer,
                                 std::wstring_view address) {
  int result = SL_NOT_SERVED;
  for (const DWORD candidate : wire::SchemesToTry(address)) {
    LOG_INFO("Prepare to send message for %s scheme", wire::SchemeName(candidate));
    result = SendMessageToBroker(candidate, request, answer, address);
    if (result == SL_SUCCESS) scheme = candidate;
    if (result != SL_NOT_SERVED) break;
  }
  return result;
}

int DispatchToBroker(DWORD& scheme, const JArchive& request, JArchive& answer, HWND window,
                     std::wstring_view address) {
  if (scheme != SL_NO_URI) return SendMessageToBroker(scheme, request, answer, address);

  LOG_INFO("SL_NO_URI scheme");
  const int result = SendMessageToBrokerAnyScheme(scheme, request, answer, address);
  if (result != SL_NOT_SERVED) return result;
  const int injection = InjectBroker(window);
  if (injection != SL_SUCCESS) {
    LOG_ERROR("SL injection failed with code %d", injection);
    return injection;
  }
  return SendMessageToBrokerAnyScheme(scheme, request, answer, address);
}
