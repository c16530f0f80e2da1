// Runs in the client. A Session is the state that a Content, its copies and its elements share:
// where the content is, and whether its broker is lost. A Session makes all calls to the module.
// Programs include tessel/Client.h, which includes this file.
#pragma once

#include <new>
#include <system_error>

#include "tessel/Client.h"
#include "wire/Addresses.h"

namespace tessel {
namespace detail {

inline std::wstring TextOf(const CComBSTR& text) { return {text.m_str, text.Length()}; }

// Returns whether a call with this result shows that the broker has ended or hangs.
inline bool MeansLost(int code) {
  return code == SL_CANNOT_READ || code == SL_CANNOT_CONNECT || code == SL_BROKER_NOT_STARTED;
}

}  // namespace detail

class Session : public std::enable_shared_from_this<Session> {
 public:
  Session(HWND hwnd, std::wstring_view sourceUri, SLUriScheme uriScheme)
      : window(hwnd), address(sourceUri), scheme(uriScheme) {}

  const HWND window;
  const std::wstring address;
  const SLUriScheme scheme;
  CallObserver* observer = nullptr;

  // Runs `body`, which calls the module's function `function`. Throws Error if the call does not
  // return SL_SUCCESS.
  template <class Body>
  void Do(const char* function, const SLElemData& record, Body body) {
    if (const int code = Run(function, record, body); code != SL_SUCCESS) {
      throw Failure(code, function, record);
    }
  }

  // Does the same as Do, but returns false if the broker answers with a positive status.
  template <class Body>
  bool Try(const char* function, const SLElemData& record, Body body) {
    const int code = Run(function, record, body);
    if (code < SL_SUCCESS) throw Failure(code, function, record);
    return code == SL_SUCCESS;
  }

  // Makes a call that may search for the broker, and that stores the scheme of the broker in
  // `root`. Keeps this scheme, so that later checks of the same WaitUntil need no search.
  template <class Body>
  void Find(const char* function, const SLElemData& root, Body body) {
    Do(function, root, body);
    foundScheme_ = root.uriScheme;
  }

  Error Failure(int code, const char* function, const SLElemData& record) const {
    const Call call = CallOf(function, record);
    if (code != SL_INVALID_OBJECT || record.hwnd != nullptr) return {code, call};
    return {code, "the element was released, abandoned or moved", "find the element again", call};
  }

  Call CallOf(const char* function, const SLElemData& record) const {
    return {function, std::wstring(record.objectId, ::SysStringLen(record.objectId)), address};
  }

  // Returns a copy of the text with a zero unit after its end. Throws Error if the text holds
  // U+0000.
  std::wstring Checked(std::wstring_view text, const char* function,
                       const SLElemData& record) const {
    if (text.find(L'\0') == text.npos) return std::wstring(text);
    throw Error(SL_INVALID_ARGUMENT, "a text holds U+0000, which the bridge cannot carry",
                "remove it from the text", CallOf(function, record));
  }

  // Returns a record that stands for the whole content. If WaitUntil makes its second or a later
  // check, the record has the scheme that the last search found, so that no new search is needed.
  SLElemData Whole() const {
    SLElemData record;
    record.hwnd = window;
    try {
      record.sourceUri = address.c_str();
    } catch (const ATL::CAtlException&) {
      throw std::bad_alloc();
    }
    record.uriScheme = Look::IsAgainAt(*this) && foundScheme_ != SL_NO_URI ? foundScheme_ : scheme;
    return record;
  }

  // Releases the element by one request. Sends nothing while the content counts as lost, which
  // means that its broker has ended or hangs.
  void Release(SLElemData& record) {
    if (isLost_ && ::SysStringLen(record.objectId) > 0) return;
    Do("ReleaseObj", record, [&] { return TesselSilverlight::ReleaseObj(record); });
  }

  // Releases the element and ignores failures. Afterwards the record names no element.
  void LetGo(SLElemData& record) noexcept {
    if (::SysStringLen(record.objectId) > 0) {
      try {
        Release(record);
      } catch (...) {
        // A failure is ignored, because destructors call this function and must not throw. The
        // broker then keeps the object.
      }
    }
    Forget(record);
  }

  // Makes the record name no element, so that its destructor sends nothing.
  static void Forget(SLElemData& record) noexcept {
    ::SysFreeString(record.objectId);
    record.objectId = nullptr;
    record.hwnd = nullptr;
  }

  // Calls Forget at the end of its scope, even if an exception ends the scope.
  struct Forgetting {
    explicit Forgetting(SLElemData& forgotten) : record(forgotten) {}
    ~Forgetting() { Forget(record); }
    Forgetting(const Forgetting&) = delete;
    Forgetting& operator=(const Forgetting&) = delete;

    SLElemData& record;
  };

  Element Own(SLElemData&& record) { return Element(shared_from_this(), std::move(record)); }

  std::optional<Element> OwnIfThere(SLElemData&& record) {
    if (::SysStringLen(record.objectId) == 0) return std::nullopt;
    return Own(std::move(record));
  }

  // A vector of records that a call fills. The destructor releases the elements that Take() has not
  // returned.
  struct Owned {
    explicit Owned(Session& owner) : session(owner) {}
    ~Owned() {
      for (SLElemData& record : records) session.LetGo(record);
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    std::vector<Element> Take() {
      std::vector<Element> elements;
      elements.reserve(records.size());
      for (SLElemData& record : records) elements.push_back(session.Own(std::move(record)));
      return elements;
    }

    Session& session;
    std::vector<SLElemData, HeapAllocator<SLElemData>> records;
  };

  std::vector<Element> Collect(SLElemData& root, const Search& search) {
    const char* const function = "FindCollection";
    std::wstring texts[] = {Checked(search.text1, function, root),
                            Checked(search.text2, function, root),
                            Checked(search.text3, function, root)};
    Owned found(*this);
    Find(function, root, [&] {
      return TesselSilverlight::FindCollection(root, texts[0].data(), texts[1].data(),
                                               texts[2].data(), search.option1, search.option2,
                                               found.records);
    });
    return found.Take();
  }

  // `ancestor` may be null.
  Identity Identify(const SLElemData* ancestor, const SLElemData& record) {
    CComBSTR texts[3];
    int number = 0;
    Do("GetIdInfo", record, [&] {
      return TesselSilverlight::GetIdInfo(ancestor, record, &texts[0], &texts[1], &texts[2],
                                          &number);
    });
    return {detail::TextOf(texts[0]), detail::TextOf(texts[1]), detail::TextOf(texts[2]), number};
  }

  // Marks one check of WaitUntil: the object exists while the check runs. During every check except
  // the first one, calls of this thread for this session start no broker.
  class Look {
   public:
    Look(const Session& session, bool isFirst)
        : session_(isFirst ? nullptr : &session), outer_(std::exchange(innermost_, this)) {}
    ~Look() { innermost_ = outer_; }
    Look(const Look&) = delete;
    Look& operator=(const Look&) = delete;

    // Returns true if this thread runs a check for `session` that is not the first check of its
    // wait.
    static bool IsAgainAt(const Session& session) {
      const Look* look = innermost_;
      while (look != nullptr && look->session_ != &session) look = look->outer_;
      return look != nullptr;
    }

   private:
    // The newest Look of the current thread. `outer_` links it to older ones, because a check may
    // itself call WaitUntil.
    static inline thread_local const Look* innermost_ = nullptr;

    const Session* const session_;
    const Look* const outer_;
  };

 private:
  // Tells the observer when a call begins and ends, even if an exception ends the call.
  struct Observation {
    Observation(CallObserver* itsObserver, const Call& itsCall)
        : observer(itsObserver), call(itsCall) {
      if (observer != nullptr) observer->Begin(call);
    }
    ~Observation() {
      if (observer != nullptr) observer->End(call, code);
    }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;

    CallObserver* const observer;
    const Call& call;
    int code = SL_FAILURE;
  };

  template <class Body>
  int Run(const char* function, const SLElemData& record, Body body) {
    const Call call = CallOf(function, record);
    if (Look::IsAgainAt(*this) && !BrokerRuns(record.uriScheme)) {
      isLost_ = true;
      throw Error(SL_CANNOT_CONNECT, call);
    }
    Observation observation(observer, call);
    observation.code = Translated(call, body);
    isLost_ = IsLostAfter(observation.code);
    return observation.code;
  }

  // Runs `body`, and turns the module's exceptions into Error or std::bad_alloc.
  template <class Body>
  static int Translated(const Call& call, Body body) {
    try {
      return body();
    } catch (const ATL::CAtlException& error) {
      if (static_cast<HRESULT>(error) == E_OUTOFMEMORY) throw std::bad_alloc();
      throw Error(SL_FAILURE, "the path of the module or of the launcher is too long",
                  "move the module to a folder with a shorter path", call);
    } catch (const std::length_error&) {
      throw Error(SL_ARCHIVE_FAILURE, call);
    } catch (const std::system_error&) {
      throw Error(SL_FAILURE, call);
    }
  }

  // Returns whether the content counts as lost after a call with this result. It is lost if its
  // broker has ended or hangs.
  bool IsLostAfter(int code) const {
    // A call that returns one of these two codes has usually sent nothing, so isLost_ keeps its
    // value. For any other code, either MeansLost is true or a broker has answered. This holds even
    // if an injection failed, because a call injects only after a broker has answered "not served".
    if (code == SL_INVALID_ARGUMENT || code == SL_INVALID_OBJECT) return isLost_;
    return detail::MeansLost(code);
  }

  // Returns true if the pipe of the broker exists. If the scheme is not known (SL_NO_URI), looks
  // for the pipe of the scheme SL_TAILORED_URI, because a search asks the broker of that scheme
  // first.
  bool BrokerRuns(DWORD usedScheme) const {
    return PipeExists(usedScheme == SL_NO_URI ? DWORD{SL_TAILORED_URI} : usedScheme);
  }

  // Does not connect to the pipe. If the pipe exists but is busy, WaitNamedPipe fails with
  // ERROR_SEM_TIMEOUT.
  bool PipeExists(DWORD usedScheme) const {
    const std::wstring pipe = wire::PipeName(usedScheme, address);
    return ::WaitNamedPipeW(pipe.c_str(), 1 /*ms*/) || ::GetLastError() == ERROR_SEM_TIMEOUT;
  }

  bool isLost_ = false;
  DWORD foundScheme_ = SL_NO_URI;
};

}  // namespace tessel
