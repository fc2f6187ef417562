// A user-defined shell command, as kept in the preferences under "Commands".
//
// Stored form (`array`), one dictionary per command, in list order, with exactly four entries:
// "name" and "text" (strings), "inline" and "suppressResult" (booleans). `newItem` and `uuid` are
// not stored.
//
// Loading (`commands`) is all or nothing: no array, or an array with any element that is not a
// dictionary, loads no commands at all. Within a dictionary each entry is taken only if it has the
// right kind ("name" and "text" strings, else empty; "inline" and "suppressResult" booleans, else
// false); other keys are ignored. Every loaded command has `newItem` false and a fresh `uuid`.
//
// Identity, ordering and duplicate detection are DataItem's (DataItem.h).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/preferences/DataItem.h"
#include "quoddle/preferences/PropertyList.h"

namespace quod {

class QUODDLE_EXPORT Command : public DataItem<Command> {
  public:
    Command(std::string name, std::string text, bool isInline, bool suppressResult, bool newItem)
        : DataItem(std::move(name), std::move(text), newItem),
          inline_(isInline),
          suppressResult_(suppressResult) {}

    // The stored "inline" option (`inline` is a C++ keyword).
    [[nodiscard]] bool isInline() const { return inline_; }
    void setInline(bool isInline) { inline_ = isInline; }
    [[nodiscard]] bool suppressResult() const { return suppressResult_; }
    void setSuppressResult(bool suppressResult) { suppressResult_ = suppressResult; }

    [[nodiscard]] static std::vector<Command> commands(const std::optional<PlistArray>& from);
    [[nodiscard]] static std::vector<PlistDictionary> array(const std::vector<Command>& from);

  private:
    bool inline_;
    bool suppressResult_;
};

}  // namespace quod
