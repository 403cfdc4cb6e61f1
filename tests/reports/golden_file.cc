#include "golden_file.h"

#include <stdexcept>

namespace orvalis::testing {

namespace {

bool isComment(const std::string& line) {
  size_t first = line.find_first_not_of(" \t");
  return first == std::string::npos || line[first] == '#';
}

bool isExitLine(const std::string& line) { return line.rfind("exit ", 0) == 0; }

}  // namespace

std::vector<std::string> splitCommandLine(const std::string& line) {
  std::vector<std::string> args;
  size_t i = 0;
  while (i < line.size()) {
    if (line[i] == ' ' || line[i] == '\t') {
      ++i;
      continue;
    }
    std::string arg;
    if (line[i] == '"') {
      ++i;
      for (;;) {
        if (i >= line.size()) throw std::runtime_error("unclosed quote in: " + line);
        char c = line[i++];
        if (c == '"') break;
        if (c == '\\' && i < line.size() && (line[i] == '"' || line[i] == '\\')) c = line[i++];
        arg += c;
      }
    } else {
      while (i < line.size() && line[i] != ' ' && line[i] != '\t') arg += line[i++];
    }
    args.push_back(arg);
  }
  return args;
}

GoldenFile parseGoldenFile(const std::string& text) {
  GoldenFile file;
  size_t pos = 0;
  bool separated = false;
  bool haveCommand = false;
  while (pos < text.size()) {
    size_t end = text.find('\n', pos);
    std::string line = text.substr(pos, end == std::string::npos ? std::string::npos : end - pos);
    pos = end == std::string::npos ? text.size() : end + 1;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line == kGoldenSeparator) {
      separated = true;
      break;
    }
    if (isComment(line)) {
      file.header.push_back(line);
    } else if (!haveCommand) {
      file.args = splitCommandLine(line);
      file.header.push_back(line);
      haveCommand = true;
    } else if (isExitLine(line)) {
      try {
        file.exitStatus = std::stoi(line.substr(5));
      } catch (const std::exception&) {
        throw std::runtime_error("bad exit line: " + line);
      }
    } else {
      throw std::runtime_error("a second command line: " + line);
    }
  }
  if (!haveCommand || file.args.empty()) throw std::runtime_error("no command line");
  if (!separated) throw std::runtime_error(std::string("no \"") + kGoldenSeparator + "\" line after the command");
  file.output = text.substr(pos);
  return file;
}

std::string formatGoldenFile(const GoldenFile& file) {
  std::string text;
  for (const std::string& line : file.header) text += line + "\n";
  if (file.exitStatus != 0) text += "exit " + std::to_string(file.exitStatus) + "\n";
  text += std::string(kGoldenSeparator) + "\n";
  return text + file.output;
}

}  // namespace orvalis::testing
