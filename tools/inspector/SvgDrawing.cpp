#include "tools/inspector/SvgDrawing.h"

#include <algorithm>
#include <sstream>

#include "tessel/Text.h"

namespace {

constexpr long long kLongestSide = 1600;  // of the picture, in pixels; a viewer can enlarge it
constexpr double kLargestFont = 10;

// How the rectangles and the texts look. A frame appears half as wide as its stroke-width, because
// the outer half of the stroke lies outside the rectangle and is cut off.
constexpr char kStyle[] =
    "<style>rect{fill:#fff;stroke:#7a8ba3;stroke-width:2}.focus rect{fill:#fff6d6;"
    "stroke:#d97706;stroke-width:4}text{fill:#223}.id{font-weight:bold}</style>\n";

// Returns the text for XML. Controls become escapes such as \x01, because XML forbids most of
// them. Escapes also replace the characters that change the direction of the text.
std::string Escaped(const std::string& text) {
  std::wstring result;
  for (const wchar_t unit : tessel::Wide(tessel::Printable(text))) {
    switch (unit) {
      case L'&':
        result += L"&amp;";
        break;
      case L'<':
        result += L"&lt;";
        break;
      case L'>':
        result += L"&gt;";
        break;
      case 0xFFFE:
      case 0xFFFF:
        result += L'\xFFFD';  // XML forbids U+FFFE and U+FFFF
        break;
      default:
        result += unit;
    }
  }
  return tessel::Narrow(result);
}

// A rectangle with a width and a height of at least 1, so that every element can be seen.
struct Box {
  explicit Box(const RECT& rect)
      : left(rect.left),
        top(rect.top),
        right(std::max<long long>(rect.right, left + 1)),
        bottom(std::max<long long>(rect.bottom, top + 1)) {}

  void Include(const Box& other) {
    left = std::min(left, other.left);
    top = std::min(top, other.top);
    right = std::max(right, other.right);
    bottom = std::max(bottom, other.bottom);
  }
  long long Width() const { return right - left; }
  long long Height() const { return bottom - top; }

  long long left, top, right, bottom;
};

Box BoundsOf(const std::vector<DrawnElement>& elements) {
  Box bounds(elements.empty() ? RECT{} : elements.front().rect);
  for (const DrawnElement& element : elements) bounds.Include(Box(element.rect));
  return bounds;
}

void AddHead(std::ostream& svg, const std::string& title, const Box& bounds) {
  const double scale =
      std::min(1.0, static_cast<double>(kLongestSide) /
                        static_cast<double>(std::max(bounds.Width(), bounds.Height())));
  svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" << bounds.left << ' ' << bounds.top
      << ' ' << bounds.Width() << ' ' << bounds.Height() << "\" width=\""
      << static_cast<double>(bounds.Width()) * scale << "\" height=\""
      << static_cast<double>(bounds.Height()) * scale
      << "\" font-family=\"sans-serif\" xml:space=\"preserve\">\n"
      << kStyle << "<title>" << Escaped(title) << "</title>\n";
}

// The inner <svg> cuts off the text at the edges of the rectangle. The font of a low rectangle is
// so small that a line of text fits into its height. The user can read this text after enlarging
// the picture. <title> is the tooltip, which shows the whole text.
void AddElement(std::ostream& svg, const DrawnElement& element) {
  const Box box(element.rect);
  const double font = std::min(kLargestFont, 0.75 * static_cast<double>(box.Height()));
  const std::string id = Escaped(element.id), name = Escaped(element.name);
  svg << "<svg x=\"" << box.left << "\" y=\"" << box.top << "\" width=\"" << box.Width()
      << "\" height=\"" << box.Height() << '"' << (element.hasFocus ? " class=\"focus\"" : "")
      << "><title>" << id << (name.empty() ? "" : ": ") << name
      << (element.hasFocus ? " (focus)" : "") << "</title><rect width=\"100%\" height=\"100%\"/>"
      << "<text x=\"4\" y=\"" << font << "\" font-size=\"" << font << "\"><tspan class=\"id\">"
      << id << "</tspan>" << (name.empty() ? "" : " ") << name << "</text></svg>\n";
}

}  // namespace

std::string DrawSvg(const std::string& title, const std::vector<DrawnElement>& elements) {
  std::ostringstream svg;
  AddHead(svg, title, BoundsOf(elements));
  for (const DrawnElement& element : elements) AddElement(svg, element);
  svg << "</svg>\n";
  return svg.str();
}
