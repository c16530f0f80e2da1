#include "tools/inspector/TreePicture.h"

#include <filesystem>
#include <fstream>

#include "tools/inspector/Progress.h"
#include "tools/inspector/SvgDrawing.h"
#include "tools/inspector/TreeReading.h"

namespace {

std::vector<DrawnElement> ReadDrawnElements(Inspection& inspection) {
  const std::string focus = ReadFocus(inspection);
  auto all = FindAllElements(inspection);
  Progress progress(inspection, "elements", all.size());
  std::vector<DrawnElement> drawn;
  for (tessel::Element& element : all) {
    tessel::Element held = std::move(element);  // released before the next element is read
    const std::string id = tessel::Narrow(held.Id());
    const auto name = inspection.Attribute(held, "name");
    drawn.push_back({id, tessel::Narrow(name.value_or(L"")), held.Record().rect, id == focus});
    progress.Show(drawn.size());
  }
  return drawn;
}

std::filesystem::path PartOf(std::filesystem::path path) {
  path += L"." + std::to_wstring(::GetCurrentProcessId()) + L".part";
  return path;
}

bool WriteText(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  return file.good();
}

// Writes the whole file or nothing: after a failure, an old file with this name stays as it is.
// Returns false if the file cannot be written.
bool WriteWholeFile(const std::filesystem::path& path, const std::string& text) {
  const std::filesystem::path part = PartOf(path);
  std::error_code error;
  if (WriteText(part, text)) {
    std::filesystem::rename(part, path, error);
    if (!error) return true;
  }
  std::filesystem::remove(part, error);
  return false;
}

// Checks the name before the elements are read, because reading them may take long.
bool CanWriteFile(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error) || !WriteText(PartOf(path), "")) return false;
  return std::filesystem::remove(PartOf(path), error);
}

}  // namespace

Report ReportPicture(Inspection& inspection) {
  const std::string& name = inspection.Options().svgFile;
  const std::filesystem::path path = tessel::Wide(name);
  const auto failure = MakeRefusal(
      ExitCode::kFailed, "write the picture " + tessel::Quoted(name), "the file cannot be created",
      "check that its folder exists, that it has a valid name, and that you may write there",
      inspection.Options().address);
  if (!CanWriteFile(path)) throw failure;
  const std::vector<DrawnElement> elements = ReadDrawnElements(inspection);
  const std::string title = tessel::Narrow(tessel::WindowTitle(inspection.Window()));
  if (!WriteWholeFile(path, DrawSvg(title, elements))) throw failure;
  Report report;
  report.Add("picture", name);
  report.Add("elements", static_cast<long long>(elements.size()));
  return report;
}
