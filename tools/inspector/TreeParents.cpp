#include "tools/inspector/TreeParents.h"

#include <queue>

#include "tools/inspector/Progress.h"

namespace {

const tessel::Search kOneLevel = {.option1 = 1};

double AreaOf(const tessel::Element& element) {
  const RECT& rect = element.Record().rect;
  return (static_cast<double>(rect.right) - rect.left) *
         (static_cast<double>(rect.bottom) - rect.top);
}

// An element below which the children can be searched. The largest element comes first. Of equally
// large ones, the one comes first that the broker listed first.
struct Candidate {
  tessel::Element* element;
  double area;
  std::size_t position;

  bool operator<(const Candidate& other) const {
    return area != other.area ? area < other.area : position > other.position;
  }
};

// To ask an element for its parent costs two calls, because the client must also release the
// parent that it gets. To search for the children of an element costs one call, and one more for
// the release of each child. So this class searches for the children of one element after another,
// until it knows the parents of all elements. It begins with the largest elements, because most
// small elements have no children.
class ParentSearch {
 public:
  ParentSearch(Inspection& inspection, std::vector<tessel::Element>& elements)
      : inspection_(inspection),
        elements_(elements),
        progress_(inspection, "parents", elements.size()) {
    for (tessel::Element& element : elements) {
      byId_.emplace(element.Id(), Candidate{&element, AreaOf(element), byId_.size()});
    }
  }

  Parents Run() {
    if (!SearchChildren()) parents_.clear();
    AskForMissing();
    return std::move(parents_);
  }

 private:
  bool IsComplete() const { return parents_.size() >= elements_.size(); }

  // Returns false if the broker searches other levels than the one level that it was asked for. If
  // the broker refuses a search, the parents that were found before are right.
  bool SearchChildren() {
    try {
      return SearchRoots() && SearchBelow();
    } catch (const InspectorError& error) {
      if (error.exitCode != ExitCode::kRefused) throw;
      return true;
    }
  }

  // Returns false if the search finds all of several elements, because the broker may then have
  // searched all levels and not only the roots.
  bool SearchRoots() {
    return Note(inspection_.Find("find the roots of the content", kOneLevel), L"") &&
           (elements_.size() == 1 || !IsComplete());
  }

  // Searches only below elements whose own parent is known. So no element costs both a search for
  // its children and the two calls that ask for its parent.
  bool SearchBelow() {
    while (!toSearch_.empty() && !IsComplete()) {
      tessel::Element& parent = *toSearch_.top().element;
      toSearch_.pop();
      auto children = inspection_.Do("find the children of " + NameOf(parent),
                                     [&] { return parent.Find(kOneLevel); });
      if (!Note(std::move(children), parent.Id())) return false;
    }
    return true;
  }

  // Releases the children. Returns false if one of them is found for the second time: then the
  // search finds more than one level.
  bool Note(std::vector<tessel::Element> children, const std::wstring& parent) {
    bool areNew = true;
    for (tessel::Element& child : children) {
      const tessel::Element held = std::move(child);
      areNew = parents_.emplace(held.Id(), parent).second && areNew;
      if (const auto known = byId_.find(held.Id()); known != byId_.end()) {
        toSearch_.push(known->second);
      }
      progress_.Show(parents_.size());
    }
    return areNew;
  }

  void AskForMissing() {
    for (tessel::Element& element : elements_) {
      if (parents_.contains(element.Id())) continue;
      const auto parent = inspection_.ParentOf(element);
      parents_.emplace(element.Id(), parent ? parent->Id() : L"");
      progress_.Show(parents_.size());
    }
  }

  Inspection& inspection_;
  std::vector<tessel::Element>& elements_;
  Progress progress_;
  std::map<std::wstring, Candidate> byId_;
  std::priority_queue<Candidate> toSearch_;
  Parents parents_;
};

}  // namespace

Parents FindParents(Inspection& inspection, std::vector<tessel::Element>& elements) {
  if (elements.empty()) return {};
  return ParentSearch(inspection, elements).Run();
}
