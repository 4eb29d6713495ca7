// The attributes of a page that a translation changes: texts that people read, and what names the
// language and its direction.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "programs/document/kind.h"
#include "programs/html/protection.h"
#include "programs/html/tokenizer.h"

namespace klib::programs {

// Adds the slots of a start tag with these attributes, in their order.
void find_slots(std::string_view page, const Token &tag, const std::vector<Attribute> &attributes,
                const Protection &protection, std::vector<Slot> &slots);

// The text of a value as it is written, with its quotes.
std::u32string read_value(std::string_view written);

// Appends a text as the value of an attribute, in the quotes that it has as it is written, or in
// others when it has none and needs some.
void write_value(std::string_view written, std::u32string_view text, std::string &result);

// Appends the value of lang or dir in a translation from one language into another.
void write_for_language(std::string_view key, std::string_view written, const std::string &from,
                        const std::string &to, std::string &result);

}  // namespace klib::programs
