#include "runtime/keyed_text.h"

#include "runtime/basic_string.h"

namespace orvalis {

namespace {

// One entry of a keyed text: where its line and its value lie.
struct Line {
  size_t begin = 0;       // first character of the line
  size_t end = 0;         // one past the line's last character (before its break)
  size_t next = 0;        // first character of the next line
  size_t equals = 0;      // position of the first "=", or npos
};

// Calls f(line) for each line until f returns false.
template <typename F>
void forEachLine(std::string_view text, F f) {
  size_t pos = 0;
  while (pos < text.size()) {
    Line line;
    line.begin = pos;
    size_t brk = text.find_first_of("\r\n", pos);
    line.end = brk == std::string_view::npos ? text.size() : brk;
    line.next = line.end;
    if (line.next < text.size()) {
      line.next += (text[line.next] == '\r' && line.next + 1 < text.size() && text[line.next + 1] == '\n') ? 2 : 1;
    }
    size_t eq = text.substr(line.begin, line.end - line.begin).find('=');
    line.equals = eq == std::string_view::npos ? eq : line.begin + eq;
    if (!f(line)) return;
    pos = line.next;
  }
}

std::string normalKey(std::string_view key) { return upperTrim(key); }

bool keyMatches(std::string_view text, const Line& line, const std::string& wanted) {
  if (line.equals == std::string_view::npos) return false;
  return equalsNoCase(trim(text.substr(line.begin, line.equals - line.begin)), wanted);
}

std::string oneLine(std::string_view value) {
  std::string v(value);
  for (char& c : v) {
    if (c == '\r' || c == '\n') c = ' ';
  }
  return v;
}

}  // namespace

std::string getKeyedValue(std::string_view text, std::string_view key) {
  std::string wanted = normalKey(key);
  std::string value;
  forEachLine(text, [&](const Line& line) {
    if (!keyMatches(text, line, wanted)) return true;
    value = trim(text.substr(line.equals + 1, line.end - line.equals - 1));
    return false;
  });
  return value;
}

bool hasKey(std::string_view text, std::string_view key) {
  std::string wanted = normalKey(key);
  bool found = false;
  forEachLine(text, [&](const Line& line) {
    found = keyMatches(text, line, wanted);
    return !found;
  });
  return found;
}

void setKeyedValue(std::string& text, std::string_view key, std::string_view value) {
  std::string wanted = normalKey(key);
  bool replaced = false;
  forEachLine(text, [&](const Line& line) {
    if (!keyMatches(text, line, wanted)) return true;
    text.replace(line.equals + 1, line.end - line.equals - 1, oneLine(value));
    replaced = true;
    return false;
  });
  if (replaced) return;
  if (!text.empty() && text.back() != '\n' && text.back() != '\r') text.push_back('\n');
  text += trim(key);
  text.push_back('=');
  text += oneLine(value);
}

bool removeKey(std::string& text, std::string_view key) {
  std::string wanted = normalKey(key);
  std::string out;
  bool removed = false;
  forEachLine(text, [&](const Line& line) {
    if (keyMatches(text, line, wanted)) {
      removed = true;
    } else {
      out.append(text, line.begin, line.next - line.begin);
    }
    return true;
  });
  if (removed) text = std::move(out);
  return removed;
}

std::vector<std::pair<std::string, std::string>> keyedEntries(std::string_view text) {
  std::vector<std::pair<std::string, std::string>> entries;
  forEachLine(text, [&](const Line& line) {
    if (line.equals != std::string_view::npos) {
      entries.emplace_back(trim(text.substr(line.begin, line.equals - line.begin)),
                           trim(text.substr(line.equals + 1, line.end - line.equals - 1)));
    }
    return true;
  });
  return entries;
}

}  // namespace orvalis
