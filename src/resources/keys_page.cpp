#include "resources/keys_page.h"

#include "resources/command_list.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kelvo {

namespace {

using Kind = CommandRow::Kind;

// What is read of an item's text: without its letter's mark, its key, and the dots that announce a dialog.
std::string PlainText(std::string_view text)
{
    std::string plain(text.substr(0, text.find('\t')));
    std::erase(plain, '&');
    while (plain.ends_with('.') || plain.ends_with(' ')) plain.pop_back();
    return plain;
}

bool HasPage(int context)
{
    return context != 0 && std::ranges::find(kHelpWithoutPage, context) == std::end(kHelpWithoutPage);
}

std::string WhatItDoes(const CommandRow& row)
{
    const std::string text = PlainText(row.text);
    return HasPage(row.help) ? "<a href=\"" + std::to_string(row.help) + ".html\">" + text + "</a>" : text;
}

std::string_view KeyTold(const CommandRow& row)
{
    return row.kind == Kind::kKeyAlone ? row.key : KeyOf(row);
}

std::string Row(const CommandRow& row)
{
    return "<tr><td><b>" + std::string(KeyTold(row)) + "</b></td><td>" + WhatItDoes(row) + "</td></tr>\n";
}

std::string Table(std::string_view heading, const std::string& rows)
{
    if (rows.empty()) return {};
    return "<h2>" + PlainText(heading) +
           "</h2>\n<table width=\"100%\">\n<tr><th width=\"35%\">Key</th><th>What it does</th></tr>\n" + rows +
           "</table>\n\n";
}

}  // namespace

std::string KeysPageTables()
{
    std::string tables;
    std::string_view heading;
    std::string rows;
    for (const CommandRow& row : kCommandList) {
        if (row.kind == Kind::kTop || row.kind == Kind::kHeading) {
            tables += Table(heading, rows);
            heading = row.text;
            rows.clear();
        } else if (!KeyTold(row).empty()) {
            rows += Row(row);
        }
    }
    return tables + Table(heading, rows);
}

}  // namespace kelvo
