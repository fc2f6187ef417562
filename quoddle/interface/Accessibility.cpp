#include "quoddle/interface/Accessibility.h"

#include <gio/gio.h>

#include <memory>

#include "quoddle/interface/GLibPointers.h"
#include "quoddle/preferences/UserDefaults.h"

namespace quod::Interface {
namespace {

struct SchemaRelease {
    void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};
struct SchemaKeyRelease {
    void operator()(GSettingsSchemaKey* key) const { g_settings_schema_key_unref(key); }
};

std::optional<bool> storedSetting(std::string_view key) {
    const auto defaults = UserDefaults::standard();
    if (!defaults->objectForKey(key)) return std::nullopt;
    return defaults->boolForKey(key);
}

}  // namespace

namespace internal {

std::optional<bool> desktopSetting(const char* schemaId, const char* key) {
    // No schemas installed at all gives no default source.
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    if (source == nullptr) return std::nullopt;
    const std::unique_ptr<GSettingsSchema, SchemaRelease> schema(
        g_settings_schema_source_lookup(source, schemaId, TRUE));
    if (!schema || !g_settings_schema_has_key(schema.get(), key)) return std::nullopt;
    const std::unique_ptr<GSettingsSchemaKey, SchemaKeyRelease> schemaKey(
        g_settings_schema_get_key(schema.get(), key));
    if (!g_variant_type_equal(g_settings_schema_key_get_value_type(schemaKey.get()),
                              G_VARIANT_TYPE_BOOLEAN)) {
        return std::nullopt;
    }
    const quod::internal::GObjectPointer<GSettings> settings(
        g_settings_new_full(schema.get(), nullptr, nullptr));
    return g_settings_get_boolean(settings.get(), key) != FALSE;
}

}  // namespace internal

bool reduceTransparency() {
    return storedSetting(reduceTransparencyKey).value_or(false);
}

bool contrast() {
    if (const auto stored = storedSetting(increaseContrastKey)) return *stored;
    return internal::desktopSetting("org.gnome.desktop.a11y.interface", "high-contrast")
        .value_or(false);
}

bool reduceMotion() {
    if (const auto stored = storedSetting(reduceMotionKey)) return *stored;
    const auto animations =
        internal::desktopSetting("org.gnome.desktop.interface", "enable-animations");
    return animations.has_value() && !*animations;
}

double alpha(double value) {
    return reduceTransparency() || contrast() ? 1.0 : value;
}

}  // namespace quod::Interface
