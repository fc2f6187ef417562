#include "quoddle/preferences/Command.h"

#include "quoddle/preferences/ValueConversions.h"

namespace quod {

std::vector<Command> Command::commands(const std::optional<PlistArray>& from) {
    std::vector<Command> commands;
    if (!from || !internal::isDictionaryList(*from)) return commands;
    commands.reserve(from->size());
    for (const PlistValue& element : *from) {
        const PlistDictionary& stored = *element.as<PlistDictionary>();
        commands.emplace_back(internal::storedString(stored, "name"),
                              internal::storedString(stored, "text"),
                              internal::storedBool(stored, "inline"),
                              internal::storedBool(stored, "suppressResult"), false);
    }
    return commands;
}

std::vector<PlistDictionary> Command::array(const std::vector<Command>& from) {
    std::vector<PlistDictionary> stored;
    stored.reserve(from.size());
    for (const Command& command : from) {
        stored.push_back({{"name", command.name()},
                          {"text", command.text()},
                          {"inline", command.isInline()},
                          {"suppressResult", command.suppressResult()}});
    }
    return stored;
}

}  // namespace quod
