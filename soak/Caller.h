// Runs in the client (soak_client). One thread of a client: makes calls of every kind, checks their
// results, and releases the elements that it received.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "Judge.h"
#include "Scene.h"
#include "TesselSilverlight.h"

namespace soak {

class Caller {
 public:
  Caller(SharedState& state, DWORD run, unsigned seed) : state_(state), run_(run), random_(seed) {}

  // Makes some calls about one random element, and releases the elements that it receives. If
  // `calm` is true, makes only calls that return no element, so that a broker can end while
  // no client holds an element.
  void Step(bool calm);

 private:
  using Records = std::vector<SLElemData, HeapAllocator<SLElemData>>;

  int Random(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

  void ChooseElement();
  SLElemData Content() const;
  bool IsHandedOut(SLElemData& element);

  // Calls `function` and checks the code that it returns. `status` is the code that the broker
  // answers while nothing disturbs it. Returns true if the broker itself, not an impostor, answered
  // with success. Then the outputs must be right.
  template <class Function>
  bool Succeeds(const Operation& operation, int status, Function function);
  void Expect(bool right, const Operation& operation);
  // Returns `known` if the scene has the current element (element_). Otherwise returns the status
  // for an unknown element.
  int StatusOf(int known) const;
  // Returns the status of a call that needs states or items, which the element kPage does not have.
  int StatusOfStates() const;

  void Read(SLElemData& element);
  void Act(SLElemData& element);
  void Navigate(SLElemData& element);
  void Collect(SLElemData& root, int status);
  bool AreElements(const Records& records, std::initializer_list<int> elements) const;

  SharedState& state_;
  const DWORD run_;
  std::minstd_rand random_;
  Life lives_[kBrokers] = {}, formerLives_[kBrokers] = {};
  // What the current call of Step uses: the broker, the element, and the broker's process and
  // window.
  int broker_ = 0;
  int element_ = 0;
  Life life_ = {};
};

}  // namespace soak
