// Makes the figures of the documents and their tables of conversions; scripts/figures.sh puts them in place.

#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

#include "figures/figures.h"
#include "tool_error.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: korvel-figures FOLDER\n";
    return 2;
  }
  try {
    const std::string folder = std::string(argv[1]) + "/";
    std::filesystem::create_directories(folder);
    korvel::tools::DrawCameraPictures(folder);
    korvel::tools::DrawPhases(folder);
    korvel::tools::DrawLayouts(folder);
    korvel::tools::DrawArchitecture(folder);
    korvel::tools::WriteConversionTable(folder);
    return 0;
  } catch (const korvel::tools::ToolError& error) {
    std::cerr << "korvel-figures: " << error.what() << "\n  " << error.Advice() << "\n";
  } catch (const std::exception& error) {
    std::cerr << "korvel-figures: " << error.what() << "\n";
  }
  return 1;
}
