// One thread of a client: makes calls of every kind, knows what each has to bring, and gives back
// what it was handed.
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

  // Some calls about one element. Holds nothing before and after; a calm step is handed nothing
  // either.
  void Step(bool calm);

 private:
  using Records = std::vector<SLElemData, HeapAllocator<SLElemData>>;

  int Random(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

  void ChooseElement();
  SLElemData Content() const;
  bool IsHandedOut(SLElemData& element);

  // Makes the call; true when what it brought has to be right.
  template <class Function>
  bool Succeeds(const Operation& operation, int status, Function function);
  void Expect(bool right, const Operation& operation);
  // What a broker says of the chosen element, when it would say this of one that it knows.
  int StatusOf(int known) const;
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
  // What the step is about.
  int broker_ = 0;
  int element_ = 0;
  Life life_ = {};
};

}  // namespace soak
