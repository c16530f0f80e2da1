// soak_shared_handles WINDOW ADDRESS SECONDS SEED is a client of a broker. Its threads share a few
// handles of the C interface. The threads use, free and replace the handles at random, so a handle
// is often freed by one thread while another thread uses it. The broker's summary tells whether
// every element was released. The exit code is 0 if each call returned a code that it may return,
// and the process holds the same resources at the end as after the warm-up.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "ProcessCounters.h"
#include "clients/c/tesselslb.h"
#include "wire/Statuses.h"

namespace {

using namespace soak;

constexpr int kThreads = 6;
constexpr int kWarmUpSteps = 200;

std::atomic<std::uint64_t> contents[2], elements[4], lists[2];
std::atomic<long> calls = 0, badHandles = 0, wrong = 0;
void* window = nullptr;
std::wstring address;

// Counts the call, and returns whether its code is 0. -102 is no error, because another thread may
// have freed the handle. `allowed` lists the other codes that this call may return.
bool Succeeded(int32_t code, std::initializer_list<int32_t> allowed = {}) {
  ++calls;
  if (code == TESSEL_BAD_HANDLE) ++badHandles;
  if (code == 0 || code == TESSEL_BAD_HANDLE) return code == 0;
  if (std::ranges::find(allowed, code) != allowed.end()) return false;
  if (++wrong <= 10) std::printf("wrong code %d\n", static_cast<int>(code));
  return false;
}

class Worker {
 public:
  explicit Worker(unsigned seed) : random_(seed) {}

  void Step() {
    switch (Random(10)) {
      case 0:
        return Replace(contents[Random(2)], Open(), &tessel_content_close);
      case 1:
        return Replace(elements[Random(4)], At(), &tessel_element_release);
      case 2:
        return Replace(elements[Random(4)], Take(), &tessel_element_release);
      case 3:
        return Replace(lists[Random(2)], Find(), &tessel_list_free);
      default:
        Use(elements[Random(4)]);
    }
  }

 private:
  using Free = int32_t (*)(std::uint64_t handle, tessel_error** error);

  int Random(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

  // Stores `handle` in `place`, and frees the handle that was there.
  static void Replace(std::atomic<std::uint64_t>& place, std::uint64_t handle, Free free) {
    if (const std::uint64_t old = place.exchange(handle); old != 0) Succeeded(free(old, nullptr));
  }

  static std::uint64_t Open() {
    tessel_content content = 0;
    Succeeded(tessel_content_open(window, address.c_str(), SL_TAILORED_URI, &content, nullptr));
    return content;
  }

  std::uint64_t At() {
    tessel_element element = 0;
    Succeeded(tessel_content_at(contents[Random(2)], 150, 130, 0, &element, nullptr));
    return element;
  }

  std::uint64_t Find() {
    const tessel_search search = {nullptr, L"Box", nullptr, 0, 1};
    tessel_list list = 0;
    if (Random(3) == 0) {
      Succeeded(tessel_element_find(elements[Random(4)], &search, &list, nullptr));
    } else if (Random(2) == 0) {
      Succeeded(tessel_content_find(contents[Random(2)], &search, &list, nullptr));
    } else {
      Succeeded(tessel_element_ancestors(elements[Random(4)], &list, nullptr));
    }
    return list;
  }

  std::uint64_t Take() {
    const tessel_list list = lists[Random(2)];
    tessel_element element = 0;
    size_t size = 0;
    Succeeded(tessel_list_size(list, &size, nullptr));
    if (size > 0) Succeeded(tessel_list_take(list, 0, &element, nullptr));
    return element;
  }

  void Use(tessel_element element) {
    wchar_t* text = nullptr;
    tessel_rectangle rectangle;
    tessel_error* error = nullptr;
    tessel_identity identity = {};
    switch (Random(6)) {
      case 0:
        Succeeded(tessel_element_id(element, &text, &error));
        break;
      case 1:
        Succeeded(tessel_element_attribute(element, L"type", &text, &error));
        break;
      case 2:
        Succeeded(tessel_element_rectangle(element, &rectangle, &error));
        break;
      case 3:
        // Identifies the element either by itself or below a random element. The broker refuses if
        // that random element is not an ancestor of it.
        Succeeded(tessel_element_identify(element, Random(2) == 0 ? 0 : elements[Random(4)].load(),
                                          &identity, &error),
                  {wire::kNotSupported});
        for (wchar_t* part : {identity.text1, identity.text2, identity.text3}) {
          tessel_text_free(part);
        }
        break;
      case 4:
        // The condition is never met. Another thread may release the element during the wait.
        Succeeded(tessel_wait_until_attribute(element, L"type", L"none", 3, 1, &error),
                  {TESSEL_TIMED_OUT, SL_INVALID_OBJECT});
        break;
      default:
        Succeeded(tessel_element_click(element, &error));
    }
    tessel_text_free(text);
    tessel_error_free(error);
  }

  std::minstd_rand random_;
};

// Wine allocates a handle for a lock when two threads first compete for it. Here many threads
// compete for the lock of the handle table, so that this handle exists before the counting begins.
void MeetAtTheTable() {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4 * kThreads; ++i) {
    threads.emplace_back([] {
      size_t size = 0;
      for (int step = 0; step < 20000; ++step) tessel_list_size(0, &size, nullptr);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

template <std::size_t count>
void FreeAll(std::atomic<std::uint64_t> (&places)[count],
             int32_t (*free)(std::uint64_t, tessel_error**)) {
  for (auto& place : places) {
    if (const std::uint64_t handle = place.exchange(0)) Succeeded(free(handle, nullptr));
  }
}

// Runs the threads while `more` returns true, and frees all handles. `more` receives the number of
// steps that the thread has done.
template <class More>
void RunThreads(unsigned seed, More more) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([=] {
      Worker worker(seed * 16 + static_cast<unsigned>(i) + 1);
      for (int step = 0; more(step); ++step) worker.Step();
    });
  }
  for (std::thread& thread : threads) thread.join();
  FreeAll(lists, &tessel_list_free);
  FreeAll(elements, &tessel_element_release);
  FreeAll(contents, &tessel_content_close);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 5) return 2;
  window = reinterpret_cast<void*>(std::strtoull(arguments[1], nullptr, 16));
  address.assign(arguments[2], arguments[2] + std::strlen(arguments[2]));
  const std::chrono::seconds duration(std::atoi(arguments[3]));
  const auto seed = static_cast<unsigned>(std::strtoul(arguments[4], nullptr, 10));
  SwitchOffTextCache();
  if (!CountersSeeLeaks()) return std::printf("a counter does not see a planted leak\n"), 1;
  MeetAtTheTable();
  const auto before = CountWhenSettled([&](int round) {
    RunThreads(seed + static_cast<unsigned>(round), [](int step) { return step < kWarmUpSteps; });
  });
  if (!before) return std::printf("its resources keep growing\n"), 1;
  const auto end = std::chrono::steady_clock::now() + duration;
  RunThreads(~seed, [end](int) { return std::chrono::steady_clock::now() < end; });
  const ProcessCounters after = CountProcess();
  std::printf("%ld calls, %ld of them with a handle that was freed; before: %s; after: %s\n",
              calls.load(), badHandles.load(), ToText(*before).c_str(), ToText(after).c_str());
  const bool right = wrong == 0 && badHandles > 0 && after == *before;
  std::printf("verdict of the handles: %s\n", right ? "nothing lost" : "something lost");
  return right ? 0 : 1;
}
