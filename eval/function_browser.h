// CFunctionBrowser: what the function browser shows, without a widget. Its rows are the rows
// of the function table that carry help, in table order; a row's help is its title, its
// argument pairs and its lines; a row of a direction family offers the variant list of its
// family, each entry with the name it puts into the equation bar.
//
//   CFunctionBrowser browser;
//   for (const CBrowserRow& row : browser.Rows()) list.add(row.name, row.title);
//   help.setText(browser.HelpText(k));
//   bar.insert(browser.Variants(k)[v].insert);
#pragma once

#include <string>
#include <vector>

struct CFuncRow;

struct CBrowserRow {
    std::string name;
    std::string title;
    const CFuncRow* row = nullptr;
};

struct CBrowserVariant {
    std::string label;   // as the family's list reads, "x direction"
    std::string insert;  // the name this entry puts into the bar
};

class CFunctionBrowser {
  public:
    // Takes the table as it stands: call after the functions are registered.
    CFunctionBrowser();

    const std::vector<CBrowserRow>& Rows() const { return rows_; }
    // The help of row k: the title, a blank line, "argument<TAB>description" lines, a blank
    // line and the example lines. A text saying so for a row without help or beyond the list.
    std::string HelpText(int k) const;
    // The family's list for row k, empty for a plain function. The entries after the first
    // insert the variant rows in turn; the first, and an entry without a variant row (the
    // dimension list of reshape, the pairs of trans), insert the general name.
    std::vector<CBrowserVariant> Variants(int k) const;

  private:
    std::vector<CBrowserRow> rows_;
    std::vector<int> table_index_;
};
