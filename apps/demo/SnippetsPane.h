// The Snippets preferences: the user's snippets ("Snippets") in stored order, with name and text
// (the text may hold the snippet markers that Text::insertSnippet reads). Every edit stores the
// whole list at once and posts "SnippetsChanged"; deleting asks first, suppressibly under
// "AlertDeleteSnippet".
#pragma once

#include <array>

#include "demo/ItemTablePane.h"
#include "quoddle/runtime/Localize.h"

namespace quod::demo {

enum class SnippetColumn { name, text };

struct SnippetColumns : ColumnProtocol<SnippetColumns, SnippetColumn> {
    static constexpr std::array entries{
        ColumnEntry<SnippetColumn>{SnippetColumn::name, &UserInterfaceItemIdentifier::Column::name,
                                   &Localize::name},
        ColumnEntry<SnippetColumn>{SnippetColumn::text,
                                   &UserInterfaceItemIdentifier::Column::string, &Localize::text}};
};

class SnippetsPane : public ItemTablePane {
    Q_OBJECT

  public:
    static constexpr const char* deleteSuppressionKey = "AlertDeleteSnippet";

    explicit SnippetsPane(QWidget* parent = nullptr);

  private:
    void store();
};

}  // namespace quod::demo
