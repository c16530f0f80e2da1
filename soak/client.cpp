// A client process of an endurance run: soak_client RUN INDEX SEED. Four threads make calls of
// every kind and check each answer; what they were handed they give back. The exit code tells
// whether the process ended with what it began with.
#include <cstdio>
#include <cstdlib>
#include <new>
#include <random>
#include <stdexcept>
#include <thread>

#include "ProcessCounters.h"
#include "SharedState.h"
#include "TesselSilverlight.h"

namespace {

using namespace TesselSilverlight;
using namespace soak;
using Records = std::vector<SLElemData, HeapAllocator<SLElemData>>;

constexpr int kWarmUpSteps = 400;

class Caller {
 public:
  Caller(SharedState& state, DWORD run, unsigned seed) : state_(state), run_(run), random_(seed) {}

  void Step() {
    broker_ = Random(kBrokers);
    element_ = Random(kElements);
    SLElemData content = Content(), found = Content();
    const RECT rect = ElementRect(element_);
    const POINT point = {element_ == 0 ? 1 : rect.left + 5, element_ == 0 ? 100 : 5};
    const int code = Call([&] { return GetElemFromPoint(content, point, 0, found); });
    owned_ = code == 0;
    if (owned_) {
      if (Right(IdOf(found) == ElementId(broker_, element_))) UseElement(found);
    } else {
      // An element that the broker would know: what fails now is the call about it.
      found.objectId = ::SysAllocString(ElementId(broker_, element_).c_str());
      UseElement(found);
      Forget(found);
    }
    Forget(content);
  }

 private:
  int Random(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

  SLElemData Content() const {
    SLElemData content;
    content.processId = state_.brokers[broker_].process;
    content.hwnd = state_.brokers[broker_].window;
    content.uriScheme = SL_TAILORED_URI;
    content.sourceUri = SceneAddress(broker_, run_).c_str();
    return content;
  }
  static std::wstring IdOf(const SLElemData& element) {
    return {element.objectId, ::SysStringLen(element.objectId)};
  }
  // Drops a record that holds no object of a broker.
  static void Forget(SLElemData& record) {
    ::SysFreeString(std::exchange(record.objectId, nullptr));
  }

  bool Right(bool right) {
    if (!right) ++state_.wrong;
    return right;
  }

  // Counts the call by its code, or as an exception of memory that no machine has.
  template <class Function>
  int Call(Function function) {
    int code = 0;
    try {
      code = function();
    } catch (const std::bad_alloc&) {
      ++state_.exceptions;
      return SL_FAILURE;
    } catch (const std::length_error&) {
      ++state_.exceptions;
      return SL_FAILURE;
    }
    ++state_.calls;
    const int index = code - kLowestCode;
    if (Right(index >= 0 && index < kCodes)) ++state_.codes[index];
    return code;
  }

  void UseElement(SLElemData& element) {
    switch (Random(9)) {
      case 0: {
        SLElemData parent;
        if (Call([&] { return GetParentElement(element, parent); }) == 0)
          Right(IdOf(parent) == (element_ == 0 ? L"" : ElementId(broker_, 0)));
        break;
      }
      case 1: {
        RECT rect = {};
        const RECT expected = element_ == 0 ? RECT{0, 0, 640, 480} : ElementRect(element_);
        if (Call([&] { return GetElemRectangle(element, rect); }) == 0)
          Right(::EqualRect(&rect, &expected));
        break;
      }
      case 2: {
        wchar_t name[] = L"name", *value = nullptr;
        if (Call([&] { return GetAttribute(element, name, &value); }) == 0)
          Right(value == ElementName(broker_, element_));
        ::SysFreeString(value);
        break;
      }
      case 3: {
        std::vector<CComBSTR, HeapAllocator<CComBSTR>> items;
        if (Call([&] { return GetItems(element, 1, items); }) == 0)
          Right(items.size() == 2 && items[1].m_str == ElementName(broker_, element_) + L" two");
        break;
      }
      case 4: {
        Records ancestors;
        std::vector<long, HeapAllocator<long>> numbers;
        const auto call = [&] { return GetAncestryInfo(element, ancestors, numbers); };
        if (Call(call) == 0) Right(AllOfThisBroker(ancestors));
        break;
      }
      case 5: {
        Records found;
        SLElemData content = Content();
        const auto call = [&] {
          return FindCollection(Random(2) == 0 ? content : element, nullptr, nullptr, nullptr, 0,
                                true, found);
        };
        if (Call(call) == 0) Right(AllOfThisBroker(found));
        Forget(content);
        break;
      }
      case 6: {
        Records chain;
        if (Call([&] { return GetDefaultSelectorHierarchy(element, chain); }) == 0)
          Right(AllOfThisBroker(chain));
        break;
      }
      case 7: {
        wchar_t* texts[3] = {};
        int number = 0;
        const auto call = [&] {
          return GetIdInfo(nullptr, element, &texts[0], &texts[1], &texts[2], &number);
        };
        if (Call(call) == 0) Right(texts[0] == ElementName(broker_, element_));
        for (wchar_t* text : texts) ::SysFreeString(text);
        break;
      }
      default:
        Act(element);
    }
  }

  void Act(SLElemData& element) {
    const std::wstring item = ElementName(broker_, element_) + L" two";
    SLElemData focused;
    switch (Random(6)) {
      case 0:
        Call([&] { return ClickElem(element, 0, 0); });
        break;
      case 1:
        Call([&] { return SetValue(element, CComBSTR(item.c_str())); });
        break;
      case 2:
        Call([&] { return SetFocus(element); });
        break;
      case 3:
        Call([&] { return CheckElem(element, Random(2)); });
        break;
      case 4:
        Call([&] { return SelectItem(element, CComBSTR(item.c_str())); });
        break;
      default:
        if (owned_) Call([&] { return ReleaseObj(element); });
        Forget(element);
    }
  }

  bool AllOfThisBroker(const Records& records) const {
    for (const SLElemData& record : records) {
      if (!IdOf(record).starts_with(Letter(broker_) + L"-")) return false;
    }
    return true;
  }

  SharedState& state_;
  const DWORD run_;
  std::minstd_rand random_;
  int broker_ = 0;
  int element_ = 0;
  bool owned_ = false;
};

void RunThreads(SharedState& state, DWORD run, unsigned seed, int mostSteps) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&state, run, seed, i, mostSteps] {
      Caller caller(state, run, seed * 16 + static_cast<unsigned>(i) + 1);
      for (int step = 0; step != mostSteps && !state.stop; ++step) {
        if (state.pause) {
          ++state.parked;
          while (state.pause && !state.stop) ::Sleep(1);
          --state.parked;
        }
        caller.Step();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const DWORD run = std::strtoul(arguments[1], nullptr, 10);
  const int index = std::atoi(arguments[2]);
  const auto seed = static_cast<unsigned>(std::strtoul(arguments[3], nullptr, 10));
  const SharedMemory state(run);
  if (!CountersSeeLeaks()) {
    std::printf("client %d: a counter does not see a planted leak\n", index);
    return 1;
  }
  const ProcessCounters before = CountWhenSettled([&](int round) {
    RunThreads(*state, run, seed + static_cast<unsigned>(round), kWarmUpSteps);
  });
  ++state->ready;
  RunThreads(*state, run, ~seed, -1);
  const ProcessCounters after = CountProcess();
  std::printf("client %d: before: %s; after: %s\n", index, ToText(before).c_str(),
              ToText(after).c_str());
  return after == before ? 0 : 1;
}
