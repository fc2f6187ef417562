// Owning pointers for the GLib and GIO objects the interface code holds: each releases its
// object the way GLib asks (g_object_unref, g_free, g_variant_unref, g_error_free).
#pragma once

#include <gio/gio.h>

#include <memory>

namespace quod::internal {

struct GObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct GFreeRelease {
    void operator()(gpointer memory) const { g_free(memory); }
};
struct GVariantRelease {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
struct GErrorRelease {
    void operator()(GError* error) const { g_error_free(error); }
};

template <typename Object>
using GObjectPointer = std::unique_ptr<Object, GObjectRelease>;
using GString = std::unique_ptr<gchar, GFreeRelease>;
using GVariantPointer = std::unique_ptr<GVariant, GVariantRelease>;
using GErrorPointer = std::unique_ptr<GError, GErrorRelease>;

}  // namespace quod::internal
