// Part of SceneBroker. Turns a request, which is the array [command, process, object, argument...],
// into a call of the function that answers it. The types of the function's parameters say which
// object id and which arguments the request must hold.
#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "tools/scenebroker/SceneText.h"
#include "tools/scenebroker/ServedScene.h"

inline constexpr std::size_t kObject = 2;         // the index of the object's id in the request
inline constexpr std::size_t kFirstArgument = 3;  // the index of the first argument in the request

// Returns the value as a T, which is int, bool or std::string. Returns nothing if the value has
// another type.
template <class T>
std::optional<T> ValueAs(const Json& value) {
  if constexpr (std::is_same_v<T, int>) {
    return AsInt32(value);
  } else {
    const bool fits = std::is_same_v<T, bool> ? value.is_boolean() : value.is_string();
    return fits ? std::optional<T>(value.get<T>()) : std::nullopt;
  }
}

// Returns the values from index `first` on as the given types. Returns nothing if a value is
// missing or has another type.
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

// RequestCall<&Function>::Answer checks a request, calls the function, and returns its answer. The
// type of the function's second parameter, Object, says which object ids the command accepts:
// - SceneElement&, const or not: the id of an element of the scene.
// - const SceneElement*: the id of an element of the scene, or the empty id, which becomes null and
//   means the whole scene.
// - const std::string&: any id. The function receives the id itself.
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
