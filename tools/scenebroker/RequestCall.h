// SceneBroker. From a request, [command, process, object, ...], to a call of the function that
// answers it: the function's parameters say what the request has to hold.
#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "tools/scenebroker/SceneText.h"
#include "tools/scenebroker/ServedScene.h"

inline constexpr std::size_t kObject = 2;         // where the request names its object
inline constexpr std::size_t kFirstArgument = 3;  // and where the command's own values begin

// The value as a T: an int, a bool or a std::string.
template <class T>
std::optional<T> ValueAs(const Json& value) {
  if constexpr (std::is_same_v<T, int>) return AsInt32(value);
  if constexpr (std::is_same_v<T, bool>) {
    if (value.is_boolean()) return value.get<bool>();
  }
  if constexpr (std::is_same_v<T, std::string>) {
    if (value.is_string()) return value.get<std::string>();
  }
  return std::nullopt;
}

// The values from `first` on, when there are so many and all are of their types.
template <class... Types, std::size_t... kIndex>
std::optional<std::tuple<Types...>> ValuesAs(const Json& request, std::size_t first,
                                             std::index_sequence<kIndex...>) {
  if (request.size() < first + sizeof...(Types)) return std::nullopt;
  std::tuple<std::optional<Types>...> values{ValueAs<Types>(request[first + kIndex])...};
  if (!(std::get<kIndex>(values).has_value() && ...)) return std::nullopt;
  return std::tuple<Types...>{*std::move(std::get<kIndex>(values))...};
}

template <class... Types>
std::optional<std::tuple<Types...>> ValuesAs(const Json& request, std::size_t first) {
  return ValuesAs<Types...>(request, first, std::index_sequence_for<Types...>());
}

// Object is what the command does with the object's id: SceneElement& wants an element that is
// there, const SceneElement* takes the empty id too and is null then, const std::string& judges
// the id itself.
template <auto function>
struct RequestCall;

template <class Object, class... Arguments, Json (*function)(ServedScene&, Object, Arguments...)>
struct RequestCall<function> {
  static Json Answer(ServedScene& served, const Json& request) {
    const auto id = request[kObject].get<std::string>();
    SceneElement* const element = served.scene.Find(id);
    if (element == nullptr && !MayBeAbsent(id)) return StatusAnswer(wire::kUnknownElement);

    const auto values = ValuesAs<std::decay_t<Arguments>...>(request, kFirstArgument);
    if (!values || request.size() != kFirstArgument + sizeof...(Arguments)) {
      return StatusAnswer(wire::kMalformedRequest);
    }
    return std::apply(
        [&](const auto&... value) {
          if constexpr (kWantsId) return function(served, id, value...);
          if constexpr (kWantsPointer) return function(served, element, value...);
          if constexpr (!kWantsId && !kWantsPointer) return function(served, *element, value...);
        },
        *values);
  }

 private:
  static constexpr bool kWantsId = std::is_same_v<Object, const std::string&>;
  static constexpr bool kWantsPointer = std::is_pointer_v<Object>;

  static bool MayBeAbsent(const std::string& id) {
    return kWantsId || (kWantsPointer && id.empty());
  }
};
