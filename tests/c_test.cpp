// Tests what the C interface adds to the C++ library: handles, codes and errors.
#include "clients/c/tesselslb.h"

#include <map>

#include "support/Elements.h"
#include "support/StandIn.h"

namespace {

using Handle = std::uint64_t;

const std::wstring address = L"c" + kProcess;
constexpr tessel_search kAll = {};
Handle handle = 5;

tessel_content Open() {
  tessel_content content = 0;
  EXPECT_EQ(
      tessel_content_open(::GetDesktopWindow(), address.c_str(), SL_NO_URI, &content, nullptr), 0);
  return content;
}

int32_t Look(void* looks, int32_t* met, const wchar_t** seen) {
  *met = ++*static_cast<int*>(looks) == 2;
  *seen = L"little";
  return 0;
}

// Returns an argument for a parameter of the type `Argument`: `handle` for a handle, `error` for
// the error output, and some valid value for every other type.
template <class Argument>
Argument Given(Handle handle, tessel_error** error) {
  static std::uint64_t results[8];
  if constexpr (std::is_same_v<Argument, Handle>) return handle;
  if constexpr (std::is_same_v<Argument, tessel_error**>) return error;
  if constexpr (std::is_same_v<Argument, const wchar_t*>) return L"";
  if constexpr (std::is_same_v<Argument, const tessel_search*>) return &kAll;
  if constexpr (std::is_same_v<Argument, tessel_look>) return &Look;
  if constexpr (std::is_pointer_v<Argument>) return reinterpret_cast<Argument>(results);
  return {};
}

using Function = std::function<int32_t(Handle, tessel_error**)>;

template <class... Arguments>
Function Call(int32_t (*function)(Arguments...)) {
  return [function](Handle handle, tessel_error** error) {
    return function(Given<Arguments>(handle, error)...);
  };
}

// kCalls contains every function of tesselslb.h that takes a handle. To find a missing function,
// the test counts the functions in the header.
TEST(Handles, AreRefusedByEveryFunctionUnlessTheyAreRight) {
  ScriptedBroker broker(SL_TAILORED_URI, address, {"[0,1,'a',1,2,3,4]", "[0,'b']", "[0,true]"});
  // The functions by the kind of their handle: 'c' for content, 'e' for element, 'l' for list.
  const std::map<char, std::vector<Function>> kCalls = {
      {'c',
       {Call(&tessel_content_close), Call(&tessel_content_window), Call(&tessel_content_at),
        Call(&tessel_content_focused), Call(&tessel_content_find), Call(&tessel_content_find_first),
        Call(&tessel_wait_until_there), Call(&tessel_wait_until_gone), Call(&tessel_wait_until)}},
      {'e',
       {Call(&tessel_element_id), Call(&tessel_element_place), Call(&tessel_element_parent),
        Call(&tessel_element_ancestors), Call(&tessel_element_selector), Call(&tessel_element_find),
        Call(&tessel_element_identify), Call(&tessel_element_rectangle),
        Call(&tessel_element_attribute), Call(&tessel_element_items), Call(&tessel_element_click),
        Call(&tessel_element_set_value), Call(&tessel_element_set_focus),
        Call(&tessel_element_check), Call(&tessel_element_select), Call(&tessel_element_release),
        Call(&tessel_element_abandon), Call(&tessel_wait_until_attribute)}},
      {'l',
       {Call(&tessel_list_size), Call(&tessel_list_take), Call(&tessel_list_number),
        Call(&tessel_list_text), Call(&tessel_list_free)}},
  };
  const std::string header = FileText(TESSEL_SOURCE "/clients/c/tesselslb.h");
  std::size_t functions = Split(header, "\nTESSEL_C_API ").size() - 1;
  for (const auto& [kind, calls] : kCalls) functions -= calls.size();
  EXPECT_EQ(functions, 5u) << "two open, two free, one version";
  const tessel_content content = Open(), closed = Open();
  EXPECT_EQ(tessel_content_close(closed, nullptr), 0);
  tessel_list list = 0;
  tessel_element element = 0;
  EXPECT_EQ(tessel_content_find(content, &kAll, &list, nullptr), 0);
  EXPECT_EQ(tessel_content_at(content, 1, 2, 0, &element, nullptr), 0);
  for (const auto& [kind, calls] : kCalls) {
    for (const Handle wrong : {Handle{0}, closed, ~Handle{0}, kind == 'c' ? element : content,
                               kind == 'l' ? element : list}) {
      for (const Function& call : calls) {
        tessel_error* error = nullptr;
        EXPECT_EQ(call(wrong, &error), TESSEL_BAD_HANDLE);
        EXPECT_STREQ(error->name, L"TESSEL_BAD_HANDLE");
        EXPECT_EQ(Narrow(error->function).substr(0, 7), "tessel_");
        tessel_error_free(error);
      }
    }
  }
  EXPECT_EQ(tessel_list_take(list, 0, &handle, nullptr), 0);
  EXPECT_EQ(tessel_element_abandon(handle, nullptr), 0);
  EXPECT_EQ(tessel_list_take(list, 0, &handle, nullptr), 0);
  EXPECT_EQ(handle, 0u);
  EXPECT_EQ(tessel_list_take(list, 1, &handle, nullptr), SL_INVALID_ARGUMENT);
  EXPECT_EQ(tessel_list_free(list, nullptr), 0);
  EXPECT_EQ(tessel_content_close(content, nullptr), 0);
  EXPECT_EQ(tessel_element_release(element, nullptr), 0);
  EXPECT_EQ(tessel_element_release(element, nullptr), TESSEL_BAD_HANDLE);
  EXPECT_EQ(broker.Wait(), 0u);
}

TEST(Arguments, OfNullAreRefused) {
  const tessel_content content = Open();
  EXPECT_EQ(tessel_content_open_title(nullptr, L"", 0, &handle, nullptr), SL_INVALID_ARGUMENT);
  EXPECT_EQ(handle, 0u) << "results are zero after a failure";
  EXPECT_EQ(tessel_content_open(::GetDesktopWindow(), L"", 5, &handle, nullptr),
            SL_INVALID_ARGUMENT);
  EXPECT_EQ(tessel_content_find(content, nullptr, &handle, nullptr), SL_INVALID_ARGUMENT);
  EXPECT_EQ(tessel_wait_until(content, L"", nullptr, nullptr, 0, 0, nullptr), SL_INVALID_ARGUMENT);
  EXPECT_EQ(tessel_version(nullptr, nullptr), SL_INVALID_ARGUMENT);
  EXPECT_EQ(tessel_content_close(content, nullptr), 0);
}

// In the first wait, the check function closes the handle of the content. The wait goes on, and
// calls the check a second time.
TEST(Waits, KeepTheirContent) {
  int looks = 0;
  static tessel_content content;
  content = Open();
  const auto close = [](void*, int32_t*, const wchar_t**) {
    return tessel_content_close(content, nullptr);
  };
  EXPECT_EQ(tessel_wait_until(content, L"", close, nullptr, 9000, 1, nullptr), TESSEL_BAD_HANDLE)
      << "the code of the second look";
  content = Open();
  EXPECT_EQ(tessel_wait_until(content, L"", &Look, &looks, 9000, 1, nullptr), 0);
  tessel_error* error = nullptr;
  looks = 5;
  EXPECT_EQ(tessel_wait_until(content, L"much", &Look, &looks, 0, 1, &error), TESSEL_TIMED_OUT);
  EXPECT_STREQ(error->meaning, L"waited 0 ms until much; seen last: little");
  tessel_error_free(error);
  EXPECT_EQ(tessel_content_close(content, nullptr), 0);
}

TEST(DeadBroker, StartsOneLauncherForTwoHundredElements) {
  ScriptedBroker broker(SL_TAILORED_URI, address, {TwoHundredElements(), "[0]"});
  const StandIn launcher(L"sllauncher");
  const tessel_content content = Open();
  tessel_list list = 0;
  EXPECT_EQ(tessel_content_find(content, &kAll, &list, nullptr), 0);
  broker.Kill();
  broker.Wait();
  EXPECT_EQ(tessel_list_free(list, nullptr), 0);
  EXPECT_EQ(launcher.Record(address).size(), 4u) << "four lines a start";
  EXPECT_EQ(tessel_content_close(content, nullptr), 0);
}

}  // namespace
