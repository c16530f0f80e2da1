#include "tools/inspector/CodeNotes.h"

#include <sstream>
#include <string_view>

namespace {

// Each line of `causes` is one cause, and each line of `logLines` is one line of the log.
constexpr struct {
  std::string_view name;
  const char* causes;
  const char* logLines;
} kNotes[] = {
    {"SL_FAILURE",
     "another client injects a broker, and this takes longer than 30 s\n"
     "the mutex for injections was created by a process with higher rights\n"
     "the broker refused to release an element that it does not know, or has released before",
     "ERROR Cannot create mutex\n"
     "ERROR Cannot acquire mutex, WaitForSingleObject returned %x\n"
     "ERROR Release failed"},
    {"SL_INVALID_ARGUMENT",
     "the window was closed after the client had found it\n"
     "the name of an attribute is empty\n"
     "a text is null, or holds U+0000",
     "ERROR Invalid window\n"
     "ERROR Invalid arguments\n"
     "ERROR Invalid attribute name\n"
     "ERROR Invalid out param\n"
     "ERROR Invalid text"},
    {"SL_CANNOT_READ",
     "the broker's program ended or crashed during the call\n"
     "the broker did not answer within 18 s: it hangs, or a debugger has stopped it\n"
     "the broker closed the connection without an answer\n"
     "a program that is not a broker serves the pipe",
     "ERROR Cannot read from SL server pipe\n"
     "ERROR ReadFile failed (%i)\n"
     "ERROR WaitForSingleObject timeout or failed (%i)\n"
     "ERROR GetOverlappedResult failed\n"
     "ERROR Failed to allocate %zu bytes"},
    {"SL_CANNOT_CONNECT",
     "the broker has been busy with other clients for 18 s, or hangs\n"
     "the broker ended just before the call\n"
     "this process has no right to open the pipe, for example because another user runs the "
     "broker\n"
     "the broker, or another program that serves the pipe, does not read the request",
     "ERROR Cannot connect to SL server pipe\n"
     "ERROR Cannot open server pipe: E_ACCESSDENIED\n"
     "ERROR Cannot open server pipe: ERROR_FILE_NOT_FOUND\n"
     "ERROR Cannot open server pipe! Error = %d\n"
     "ERROR SetNamedPipeHandleState failed\n"
     "ERROR Cannot write to SL server pipe\n"
     "ERROR WaitForSingleObject timeout or failed\n"
     "ERROR WriteBuffer failed"},
    {"SL_NOT_SERVED",
     "the window is not the one that shows the content\n"
     "another broker than that of the given scheme shows this window\n"
     "the content was closed, and the broker still runs",
     "ERROR SendMessageToBroker failed with %d"},
    {"SL_BROKER_NOT_STARTED",
     "no broker runs, and Silverlight's launcher is not installed\n"
     "a broker runs, but for another scheme or another address\n"
     "no scheme was given: the search asks the tailored broker first, and ends if none runs\n"
     "the tailored broker answered, but does not show this window (-8): so the search asked the "
     "broker of the address's scheme, and none runs\n"
     "the address begins with a scheme in capital letters, such as HTTP:\n"
     "SLBroker.xap is not beside the module, so the launcher cannot start the broker\n"
     "the launcher ran, but the broker's pipe did not appear within 15 s",
     "ERROR Cannot start SLBroker process\n"
     "ERROR Cannot sllauncher.exe\n"
     "ERROR Cannot find sllauncher.exe\n"
     "ERROR Cannot get program files folder\n"
     "ERROR CreateProcess failed, slLauncher=%ls cmdLine=%ls\n"
     "ERROR Cannot get URI scheme as string\n"
     "ERROR Invalid URI scheme\n"
     "INFO Cannot connect to SLBroker pipe\n"
     "INFO sllauncher.exe=%ls\n"
     "INFO Created sllauncher process with pid %i"},
    {"SL_INJECTOR_NOT_STARTED",
     "the window is not the one that shows the content\n"
     "slinject.exe is not in the module's folder\n"
     "a policy or a virus scanner forbids slinject.exe",
     "ERROR CreateProcess failed, cmdLine=%ls\n"
     "ERROR SL injection failed with code %d\n"
     "INFO slinject.exe=%ls"},
    {"SL_INJECTION_FAILED",
     "the window is not the one that shows the content\n"
     "slinject.exe has no right to open the window's process\n"
     "slinject.exe did not end within 10 s, for example because the window's process hangs",
     "ERROR Silverlight injector failed, exit code =%d\n"
     "ERROR Silverlight injector timedout\n"
     "ERROR SL injection failed with code %d\n"
     "INFO Created slinject process with pid %i"},
    {"SL_ARCHIVE_FAILURE",
     "the broker has another version, and answers with other values\n"
     "the answer is not a JSON array, or ends early\n"
     "a program that is not a broker serves the pipe",
     "ERROR Archive failure: '%s'"},
    {"SL_INVALID_OBJECT",
     "the call that should have filled the record failed\n"
     "the element was released, and then used again\n"
     "an element and its ancestor belong to different processes or schemes",
     "ERROR Invalid SL object\n"
     "ERROR Invalid pParentObj\n"
     "ERROR Objects not in the same context"},
    {"E_NOTIMPL", "the program calls GetElementValue; an element's value is the attribute value",
     ""},
    {"TESSEL_TIMED_OUT",
     "the content is slower than the time-out allows\n"
     "the condition names another element or another text than the content has",
     ""},
    {"BROKER_UNKNOWN_COMMAND", "the broker is older than the client",
     "ERROR SendMessageToBroker failed with %d"},
    {"BROKER_UNKNOWN_ELEMENT",
     "the broker was started again after the client had found the element\n"
     "the element was released, and then used again",
     "ERROR SendMessageToBroker failed with %d"},
    {"BROKER_NOT_SUPPORTED",
     "the attribute or the item does not exist, or its name has other capital letters",
     "ERROR SendMessageToBroker failed with %d"},
    {"BROKER_MALFORMED_REQUEST", "a number is out of range, such as a negative number of levels",
     "ERROR SendMessageToBroker failed with %d"},
    {"SL_CHANNEL_NOT_INITIALIZED",
     "the host has not called InitComm\n"
     "another thread of the host has called UninitComm",
     "ERROR Pipe not initialized\n"
     "ERROR WriteMessage - Pipe not initialized\n"
     "ERROR Server pipe not init"},
    {"SL_CHANNEL_CLOSED",
     "InitComm: the scheme is none of http, https, file and tailored\n"
     "WriteMessage was called without a request, or ReadMessage twice without an answer between\n"
     "another thread of the host has called UninitComm during the call\n"
     "InitComm has returned -4 before",
     "ERROR Cannot get pipe name\n"
     "ERROR PipeException: '%s'\n"
     "ERROR Cannot read from pipe\n"
     "ERROR WriteMessage - PipeException: '%s'\n"
     "INFO Pipe shotdown\n"
     "INFO WriteMessage - Pipe shutdown\n"
     "INFO UninitComm PipeException: '%s'"},
    {"SL_CHANNEL_NOT_CREATED",
     "another broker, or another program, serves a pipe of this name\n"
     "a ReadMessage or WriteMessage of an earlier channel of this host is still running",
     "ERROR Cannot create pipe\n"
     "ERROR CreateServerPipe: could not create pipe\n"
     "ERROR CreateServerPipe: cannot create pipe! errCode=%d"},
    {"SL_CHANNEL_INVALID_ARGUMENT", "",
     "ERROR Invalid arguments\n"
     "ERROR Invalid buffer\n"
     "ERROR WriteMessage - Invalid arguments"},
    {"SL_CHANNEL_CANNOT_READ",
     "the client ended, or disconnected before it had sent its request\n"
     "the client connected, and sent nothing for 3 s",
     "ERROR ReadMessage - ReadString failed, prepare to pipe->DisconnectClient\n"
     "ERROR Cannot read from pipe\n"
     "INFO ReadMessage - WaitClientToConnect failed"},
    {"SL_CHANNEL_CANNOT_WRITE",
     "the client ended, or disconnected before the answer\n"
     "the client does not read, and the answer could not be written within 3 s\n"
     "the answer is empty",
     "ERROR WriteMessage - Cannot write to pipe\n"
     "ERROR Nothing to write"},
    {"SL_CHANNEL_NO_CLIENT", "",
     "INFO ReadMessage - WaitClientToConnect timedout\n"
     "INFO Timeout at reading from pipe"},
};

std::vector<std::string> LinesOf(const char* text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace

CodeNotes NotesFor(const std::string& name) {
  for (const auto& notes : kNotes) {
    if (notes.name == name) return {LinesOf(notes.causes), LinesOf(notes.logLines)};
  }
  return {};
}
