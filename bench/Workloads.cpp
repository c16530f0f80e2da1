#include "Workloads.h"

#include <random>

namespace bench {

namespace {

Text Widen(const std::string& ascii) { return Text(ascii.begin(), ascii.end()); }

class Builder {
 public:
  explicit Builder(std::string name) { workload_.name = std::move(name); }

  Builder& operator<<(std::int32_t number) { return Add({Kind::kInt, number, {}}); }
  Builder& operator<<(Text text) { return Add({Kind::kText, 0, std::move(text)}); }
  Workload Take() { return std::move(workload_); }

 private:
  Builder& Add(Value value) {
    workload_.kinds.push_back(value.kind);
    workload_.values.push_back(std::move(value));
    return *this;
  }

  Workload workload_;
};

Text ObjectId(std::size_t number) { return Widen("SL:" + std::to_string(number)); }

constexpr std::uint32_t kSeed = 4711;

}  // namespace

Workload MakeRequest() {
  return (Builder("request of 3 elements") << 2 << 4242 << ObjectId(4711)).Take();
}

Workload MakeEntries() {
  std::minstd_rand random(kSeed);
  Builder builder("10,000 entries: id, 4 ints");
  for (std::size_t i = 0; i < 10000; ++i) {
    builder << ObjectId(i + 1);
    for (int side = 0; side < 4; ++side)
      builder << static_cast<std::int32_t>(random() % 4000) - 100;
  }
  return builder.Take();
}

Workload MakeTexts() {
  std::minstd_rand random(kSeed);
  Builder builder("10,000 texts of 40 characters");
  // The texts resemble captions: Latin words with some accented letters, and words in other
  // scripts.
  static constexpr struct {
    std::uint16_t first;  // the first letter of the writing system
    int every;            // one of `every` characters is a letter of this writing system
  } kScripts[] = {{0x00E0, 6}, {0x0430, 1}, {0x4E2D, 1}};
  static constexpr std::uint16_t kEscaped[] = {'"', '\\', '\n', '\t', 1};
  for (std::size_t i = 0; i < 10000; ++i) {
    Text text;
    const bool ascii = i % 5 != 0;
    const auto& script = kScripts[i / 5 % 3];
    for (int j = 0; j < 40; ++j) {
      const auto letter = static_cast<std::uint16_t>(random() % 20);
      const bool own = !ascii && j % script.every == 0;
      text += static_cast<Unit>(j % 8 == 7 ? ' ' : (own ? script.first : 'a') + letter);
    }
    if (i % 10 == 3) {
      for (std::size_t j = 0; j < 3; ++j)
        text[j * 13 + random() % 13] = static_cast<Unit>(kEscaped[random() % 5]);
    }
    builder << text;
  }
  return builder.Take();
}

Workload MakeLongText() {
  std::minstd_rand random(kSeed);
  Text text;
  while (text.size() < (1u << 20) / sizeof(Unit))
    text += static_cast<Unit>(random() % 6 == 0 ? ' ' : 'a' + random() % 26);
  return (Builder("one text of 1 MiB") << text).Take();
}

std::vector<Workload> AllWorkloads() {
  return {MakeRequest(), MakeEntries(), MakeTexts(), MakeLongText()};
}

Workload MakeInts(std::size_t count) {
  std::minstd_rand random(kSeed);
  Builder builder("ints");
  for (std::size_t i = 0; i < count; ++i) builder << static_cast<std::int32_t>(random() % 4000);
  return builder.Take();
}

Workload MakeShortTexts(std::size_t count) {
  Builder builder("texts");
  // All texts have the same length, so that the time per element does not depend on the number of
  // texts.
  for (std::size_t i = 0; i < count; ++i)
    builder << Text(Widen("caption ") += ObjectId(1000 + i % 9000));
  return builder.Take();
}

}  // namespace bench
