// Keyed texts: "KEY=value" entries held in one string.
//
// Several procedures pass their data as one text of settings ("WTE_ID=...",
// "EMP_ID=...", the audit writer's "ACTION=...", a form's "QUERY_USER_VALUES")
// and read and write single entries in place. Entries are separated by line
// breaks: CR LF, LF and CR are all read, "\n" is written. The key is the text
// before the first "=" of an entry; a value may hold ";", "," and "=" but not
// a line break (setKeyedValue writes line breaks in a value as blanks). Keys
// compare after trimming and upper-casing; the first entry with a key wins.
// Lines without "=" are ignored. Free functions; thread-safe.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvalis {

// The trimmed value of key, or "" when the text has no such key.
std::string getKeyedValue(std::string_view text, std::string_view key);
bool hasKey(std::string_view text, std::string_view key);

// Replaces the value of key's first entry where it stands (keeping the
// entry's key as written), or appends "KEY=value" on a new line.
void setKeyedValue(std::string& text, std::string_view key, std::string_view value);

// Removes every entry with this key; true when one was removed.
bool removeKey(std::string& text, std::string_view key);

// All entries in order, keys and values trimmed (keys as written).
std::vector<std::pair<std::string, std::string>> keyedEntries(std::string_view text);

}  // namespace orvalis
