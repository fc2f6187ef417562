// The identifiers of the toolbar items of the applications' windows.
//
// A toolbar's delegate makes its items by these identifiers and the toolbar saves its
// configuration under them, so the values are kept exactly: each is the member name with a
// capital first letter followed by "ToolbarItem". One exception is kept on purpose: `remove` has
// the value "InsertToolbarItem", the same as `insert`, as the applications have always had it.
// `deleteString` and `newString` stand for the members "delete" and "new", which are C++ keywords.
#pragma once

#include <span>

#include "quoddle/Export.h"
#include "quoddle/interface/Identifier.h"

// clang-format off
#define QUOD_TOOLBAR_ITEM_IDENTIFIERS(X) \
    X(add, "AddToolbarItem") \
    X(advancedFind, "AdvancedFindToolbarItem") \
    X(back, "BackToolbarItem") \
    X(backForward, "BackForwardToolbarItem") \
    X(centerSpace, "CenterSpaceToolbarItem") \
    X(close, "CloseToolbarItem") \
    X(deleteString, "DeleteToolbarItem") \
    X(documents, "DocumentsToolbarItem") \
    X(filter, "FilterToolbarItem") \
    X(folders, "FoldersToolbarItem") \
    X(forward, "ForwardToolbarItem") \
    X(functions, "FunctionsToolbarItem") \
    X(info, "InfoToolbarItem") \
    X(insert, "InsertToolbarItem") \
    X(log, "LogToolbarItem") \
    X(mode, "ModeToolbarItem") \
    X(newString, "NewToolbarItem") \
    X(open, "OpenToolbarItem") \
    X(preview, "PreviewToolbarItem") \
    X(progress, "ProgressToolbarItem") \
    X(quickLook, "QuickLookToolbarItem") \
    X(refresh, "RefreshToolbarItem") \
    X(remove, "InsertToolbarItem") \
    X(run, "RunToolbarItem") \
    X(save, "SaveToolbarItem") \
    X(share, "ShareToolbarItem") \
    X(sidebar, "SidebarToolbarItem")
// clang-format on

namespace quod {

class QUODDLE_EXPORT ToolbarItemIdentifier : public Identifier<ToolbarItemIdentifier> {
  public:
    using Identifier::Identifier;

#define QUOD_DECLARE_IDENTIFIER(member, value) \
    [[nodiscard]] static const ToolbarItemIdentifier& member();
    QUOD_TOOLBAR_ITEM_IDENTIFIERS(QUOD_DECLARE_IDENTIFIER)
#undef QUOD_DECLARE_IDENTIFIER

    [[nodiscard]] static std::span<const Entry> entries();
};

}  // namespace quod
