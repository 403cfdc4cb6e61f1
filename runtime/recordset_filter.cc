#include "runtime/recordset_filter.h"

#include <cctype>
#include <utility>

#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/recordset.h"
#include "runtime/recordset_detail.h"

namespace orvalis::recordset_detail {

namespace {

// ---- Lexer ----

struct FilterToken {
  enum Kind { LParen, RParen, Name, Text, Date, Number, Operator, End } kind;
  std::string text;
};

std::vector<FilterToken> lexFilter(std::string_view s) {
  std::vector<FilterToken> out;
  size_t i = 0;
  auto closing = [&](char quote) -> std::string {
    std::string text;
    for (++i;; ++i) {
      if (i >= s.size()) raiseBadArgument("unterminated " + std::string(1, quote));
      if (s[i] == quote) {
        if (quote == '\'' && i + 1 < s.size() && s[i + 1] == '\'') {
          text.push_back('\'');
          ++i;
          continue;
        }
        ++i;
        return text;
      }
      text.push_back(s[i]);
    }
  };
  while (i < s.size()) {
    char c = s[i];
    if (std::isspace(static_cast<unsigned char>(c))) {
      ++i;
    } else if (c == '(') {
      out.push_back({FilterToken::LParen, "("});
      ++i;
    } else if (c == ')') {
      out.push_back({FilterToken::RParen, ")"});
      ++i;
    } else if (c == '[') {
      size_t end = s.find(']', i);
      if (end == std::string_view::npos) raiseBadArgument("unterminated [");
      out.push_back({FilterToken::Name, std::string(s.substr(i + 1, end - i - 1))});
      i = end + 1;
    } else if (c == '\'' || c == '"') {
      out.push_back({FilterToken::Text, closing(c)});
    } else if (c == '#') {
      out.push_back({FilterToken::Date, closing('#')});
    } else if (c == '<' || c == '>' || c == '=' || c == '!') {
      std::string op(1, c);
      if (i + 1 < s.size() && (s[i + 1] == '=' || (c == '<' && s[i + 1] == '>'))) op.push_back(s[++i]);
      if (op == "!") raiseBadArgument("operator !");
      if (op == "!=") op = "<>";
      out.push_back({FilterToken::Operator, op});
      ++i;
    } else if (std::isdigit(static_cast<unsigned char>(c)) ||
               ((c == '-' || c == '+' || c == '.') && i + 1 < s.size() &&
                (std::isdigit(static_cast<unsigned char>(s[i + 1])) || s[i + 1] == '.'))) {
      size_t j = i + 1;
      while (j < s.size() && (std::isalnum(static_cast<unsigned char>(s[j])) || s[j] == '.' ||
                              ((s[j] == '+' || s[j] == '-') && (s[j - 1] == 'e' || s[j - 1] == 'E')))) {
        ++j;
      }
      out.push_back({FilterToken::Number, std::string(s.substr(i, j - i))});
      i = j;
    } else {
      size_t j = i;
      while (j < s.size() && !std::isspace(static_cast<unsigned char>(s[j])) &&
             std::string_view("()<>=!'\"#[").find(s[j]) == std::string_view::npos) {
        ++j;
      }
      out.push_back({FilterToken::Name, std::string(s.substr(i, j - i))});
      i = j;
    }
  }
  out.push_back({FilterToken::End, ""});
  return out;
}

// ---- Parser ----

class FilterParser {
 public:
  FilterParser(std::string_view criteria, const Recordset& rs, std::vector<FilterNode>& nodes)
      : tokens_(lexFilter(criteria)), rs_(rs), nodes_(nodes) {}

  int parse() {
    int root = parseOr();
    if (peek().kind != FilterToken::End) raiseBadArgument("unexpected '" + peek().text + "'");
    return root;
  }

 private:
  const FilterToken& peek() const { return tokens_[pos_]; }
  bool isWord(const char* word) const {
    return peek().kind == FilterToken::Name && equalsNoCase(peek().text, word);
  }

  int add(FilterNode node) {
    nodes_.push_back(std::move(node));
    return static_cast<int>(nodes_.size()) - 1;
  }

  int parseOr() {
    int left = parseAnd();
    while (isWord("OR")) {
      ++pos_;
      FilterNode n;
      n.kind = FilterNode::Or;
      n.left = left;
      n.right = parseAnd();
      left = add(std::move(n));
    }
    return left;
  }

  int parseAnd() {
    int left = parseFactor();
    while (isWord("AND")) {
      ++pos_;
      FilterNode n;
      n.kind = FilterNode::And;
      n.left = left;
      n.right = parseFactor();
      left = add(std::move(n));
    }
    return left;
  }

  int parseFactor() {
    if (peek().kind == FilterToken::LParen) {
      ++pos_;
      int inner = parseOr();
      if (peek().kind != FilterToken::RParen) raiseBadArgument("missing )");
      ++pos_;
      return inner;
    }
    return parseClause();
  }

  int parseClause() {
    if (peek().kind != FilterToken::Name) raiseBadArgument("field name expected");
    FilterNode n;
    n.field = rs_.fieldIndex(peek().text);
    if (n.field < 0) raiseItemNotFound();
    ++pos_;
    const FilterToken& opToken = peek();
    if (opToken.kind == FilterToken::Operator) {
      static const std::pair<const char*, Op> kOps[] = {{"=", Op::Eq},  {"<>", Op::Ne}, {"<", Op::Lt},
                                                        {">", Op::Gt},  {"<=", Op::Le}, {">=", Op::Ge}};
      for (const auto& [text, op] : kOps) {
        if (opToken.text == text) n.op = op;
      }
      ++pos_;
    } else if (isWord("LIKE")) {
      n.op = Op::Like;
      ++pos_;
    } else if (isWord("IS")) {
      ++pos_;
      bool negated = isWord("NOT");
      if (negated) ++pos_;
      if (!isWord("NULL")) raiseBadArgument("NULL expected after IS");
      ++pos_;
      n.op = negated ? Op::IsNotNull : Op::IsNull;
      return add(std::move(n));
    } else {
      raiseBadArgument("operator expected");
    }

    const FilterToken& v = peek();
    if (isWord("NULL")) {
      if (n.op == Op::Eq) {
        n.op = Op::IsNull;
      } else if (n.op == Op::Ne) {
        n.op = Op::IsNotNull;
      } else {
        raiseBadArgument("NULL compares only with = or <>");
      }
    } else if (v.kind == FilterToken::Text) {
      n.literal.kind = Literal::Text;
      n.literal.text = v.text;
      n.literal.textNumber = parseNumber(v.text);
      n.literal.textDate = parseDate(v.text);
    } else if (v.kind == FilterToken::Number && n.op != Op::Like) {
      auto d = parseNumber(v.text);
      if (!d) raiseBadArgument("bad number " + v.text);
      n.literal.kind = Literal::Number;
      n.literal.number = *d;
      n.literal.text = v.text;
    } else if (v.kind == FilterToken::Date && n.op != Op::Like) {
      auto d = parseDate(v.text);
      if (!d) raiseBadArgument("bad date #" + v.text + "#");
      n.literal.kind = Literal::Date;
      n.literal.date = *d;
      n.literal.text = v.text;
    } else {
      raiseBadArgument("value expected");
    }
    ++pos_;
    return add(std::move(n));
  }

  std::vector<FilterToken> tokens_;
  size_t pos_ = 0;
  const Recordset& rs_;
  std::vector<FilterNode>& nodes_;
};

bool applyOp(Op op, int cmp) {
  switch (op) {
    case Op::Eq: return cmp == 0;
    case Op::Ne: return cmp != 0;
    case Op::Lt: return cmp < 0;
    case Op::Gt: return cmp > 0;
    case Op::Le: return cmp <= 0;
    case Op::Ge: return cmp >= 0;
    default: return false;
  }
}

}  // namespace

// '*' and '%' stand for any run of characters; letters match in any case.
bool likeMatch(std::string_view s, std::string_view pattern) {
  size_t si = 0, pi = 0, star = std::string_view::npos, mark = 0;
  while (si < s.size()) {
    if (pi < pattern.size() && (pattern[pi] == '*' || pattern[pi] == '%')) {
      star = pi++;
      mark = si;
    } else if (pi < pattern.size() && up(pattern[pi]) == up(s[si])) {
      ++pi;
      ++si;
    } else if (star != std::string_view::npos) {
      pi = star + 1;
      si = ++mark;
    } else {
      return false;
    }
  }
  while (pi < pattern.size() && (pattern[pi] == '*' || pattern[pi] == '%')) ++pi;
  return pi == pattern.size();
}

// ---- Filter ----

RowFilter::RowFilter(std::string_view criteria, const Recordset& rs) {
  if (!trim(criteria).empty()) root_ = FilterParser(criteria, rs, nodes_).parse();
}

bool RowFilter::matches(const CellStore& cells, long row) const { return matches(cells, root_, row); }

namespace {

bool clauseMatches(const FilterNode& n, const CellView& c) {
  CellKind k = kindOf(c);
  if (n.op == Op::IsNull) return isNullish(k);
  if (n.op == Op::IsNotNull) return !isNullish(k);
  if (isNullish(k)) return false;
  const Literal& lit = n.literal;
  if (n.op == Op::Like) {
    return isText(k) ? likeMatch(c.text, lit.text) : likeMatch(c.value().text(), lit.text);
  }
  if (isText(k)) {
    std::string_view s = c.text;
    if (lit.kind == Literal::Text) return applyOp(n.op, compareNoCase(s, lit.text));
    if (lit.kind == Literal::Number) {
      auto d = parseNumber(s);
      return d ? applyOp(n.op, compareNumbers(*d, lit.number)) : applyOp(n.op, compareNoCase(s, lit.text));
    }
    auto d = parseDate(s);
    return d && applyOp(n.op, compareNumbers(dateKey(*d), dateKey(lit.date)));
  }
  Value v = c.value();
  if (k == CellKind::Date) {
    int64_t key = dateKey(v.asDate());
    if (lit.kind == Literal::Date) return applyOp(n.op, compareNumbers(key, dateKey(lit.date)));
    if (lit.kind == Literal::Number) return applyOp(n.op, compareNumbers(v.asDate().serial(), lit.number));
    if (lit.textDate) return applyOp(n.op, compareNumbers(key, dateKey(*lit.textDate)));
    return applyOp(n.op, compareNoCase(v.text(), lit.text));
  }
  double x = v.toDouble();
  if (lit.kind == Literal::Number) return applyOp(n.op, compareNumbers(x, lit.number));
  if (lit.kind == Literal::Date) return applyOp(n.op, compareNumbers(x, lit.date.serial()));
  if (lit.textNumber) return applyOp(n.op, compareNumbers(x, *lit.textNumber));
  return applyOp(n.op, compareNoCase(v.text(), lit.text));
}

}  // namespace

bool RowFilter::matches(const CellStore& cells, int at, long row) const {
  const FilterNode& n = nodes_[static_cast<size_t>(at)];
  switch (n.kind) {
    case FilterNode::And: return matches(cells, n.left, row) && matches(cells, n.right, row);
    case FilterNode::Or: return matches(cells, n.left, row) || matches(cells, n.right, row);
    case FilterNode::Clause: return clauseMatches(n, cells.view(row, n.field));
  }
  return false;
}

}  // namespace orvalis::recordset_detail
