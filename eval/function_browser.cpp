#include "eval/function_browser.h"

#include "eval/function_table.h"

CFunctionBrowser::CFunctionBrowser() {
    const auto& table = FunctionTable();
    for (size_t k = 0; k < table.size(); ++k) {
        const CFuncRow* row = table[k];
        if (!row->help) continue;
        rows_.push_back({row->name, row->help[0] ? row->help[0] : "", row});
        table_index_.push_back(static_cast<int>(k));
    }
}

std::string CFunctionBrowser::HelpText(int k) const {
    if (k < 0 || k >= static_cast<int>(rows_.size())) return "no function selected";
    const CFuncRow* row = rows_[k].row;
    if (!row->help || !row->help[0]) return std::string("no help for ") + row->name;
    const CFuncHelp help = ReadHelp(row->help);
    std::string text = std::string(help.title) + "\n";
    if (!help.arguments.empty()) text += "\n";
    for (const auto& [name, description] : help.arguments)
        text += std::string(name) + "\t" + description + "\n";
    if (!help.lines.empty()) text += "\n";
    for (const char* line : help.lines) text += std::string(line) + "\n";
    return text;
}

std::vector<CBrowserVariant> CFunctionBrowser::Variants(int k) const {
    std::vector<CBrowserVariant> out;
    if (k < 0 || k >= static_cast<int>(rows_.size())) return out;
    const char* const* labels = FamilyVariants(rows_[k].row->family);
    if (!labels) return out;
    const std::string general = rows_[k].name;
    int count = 0;
    while (labels[count]) ++count;
    // A family's variant rows follow its general row in the table, without help, in the
    // order of the list after its general entry (not every one is named after the general).
    std::vector<std::string> variants;
    for (int i = table_index_[k] + 1; static_cast<int>(variants.size()) < count - 1; ++i) {
        const CFuncRow* row = FunctionRow(i);
        if (!row || row->help) break;
        variants.push_back(row->name);
    }
    for (int v = 0; labels[v]; ++v) {
        const bool has_row = v > 0 && static_cast<size_t>(v) <= variants.size();
        out.push_back({labels[v], has_row ? variants[v - 1] : general});
    }
    return out;
}
