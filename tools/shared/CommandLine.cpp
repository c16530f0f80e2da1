#include "tools/shared/CommandLine.h"

#include <shellapi.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "tools/shared/ConsoleText.h"

namespace tools {
namespace {

constexpr struct {
  const char* name;
  SLUriScheme scheme;
} kSchemes[] = {{"tailored", SL_TAILORED_URI},
                {"http", SL_HTTP_URI},
                {"https", SL_HTTPS_URI},
                {"file", SL_FILE_URI}};

}  // namespace

std::vector<std::string> Arguments() {
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&::LocalFree)> arguments(
      ::CommandLineToArgvW(::GetCommandLineW(), &count), &::LocalFree);
  std::vector<std::string> result;
  for (int i = 1; i < count; ++i) result.push_back(tessel::Narrow(arguments.get()[i]));
  return result;
}

std::string RefuseEmpty(const std::string& text) { return text.empty() ? "must not be empty" : ""; }

void Parse(CLI::App& app, std::vector<std::string> arguments) {
  std::ranges::reverse(arguments);  // CLI11 expects the arguments in reverse order
  app.parse(std::move(arguments));
}

std::optional<int> ParseCommandLine(CLI::App& app) {
  try {
    Parse(app, Arguments());
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsageError;
  }
}

CLI::Option* AddSchemeOption(CLI::App& app, std::string& scheme, const std::string& description) {
  std::vector<std::string> names;
  for (const auto& entry : kSchemes) names.push_back(entry.name);
  return app.add_option("--scheme", scheme, description)->check(CLI::IsMember(names));
}

SLUriScheme SchemeFromName(const std::string& name) {
  for (const auto& entry : kSchemes) {
    if (name == entry.name) return entry.scheme;
  }
  return SL_NO_URI;
}

std::string NameOfScheme(DWORD scheme) {
  for (const auto& entry : kSchemes) {
    if (scheme == static_cast<DWORD>(entry.scheme)) return entry.name;
  }
  return "unknown";
}

}  // namespace tools
