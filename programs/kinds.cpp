// The table of the kinds of documents: a new kind is a room and a row.
#include "programs/kinds.h"

#include "programs/html/kind.h"

namespace klib::programs {
namespace {

struct Row {
  const DocumentKind &kind;
  std::string_view types;  // of files, each between blanks; the first kind takes all others, too
};

constexpr Row rows[] = {
    {html, " html htm xhtml "},
};

}  // namespace

const DocumentKind &kind_of_file(std::string_view name) {
  const size_t dot = name.rfind('.');
  std::string type = " ";
  type.append(dot == name.npos ? "" : name.substr(dot + 1)).append(" ");
  for (const Row &row : rows)
    if (row.types.find(type) != row.types.npos) return row.kind;
  return rows[0].kind;
}

const DocumentKind *find_kind(std::string_view name) {
  for (const Row &row : rows)
    if (row.kind.name == name) return &row.kind;
  return nullptr;
}

}  // namespace klib::programs
