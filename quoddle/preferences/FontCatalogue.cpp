#include "quoddle/preferences/FontCatalogue.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <map>
#include <mutex>

#include "quoddle/base/Precondition.h"

namespace quod {
namespace {

// ---- fixed --------------------------------------------------------------------------------------

class FixedFontCatalogue final : public FontCatalogue {
  public:
    FixedFontCatalogue(std::vector<Face> faces, std::string systemFontName,
                       std::optional<std::string> fixedPitchFontName, double defaultPointSize)
        : faces_(std::move(faces)),
          systemFontName_(std::move(systemFontName)),
          fixedPitchFontName_(std::move(fixedPitchFontName)),
          defaultPointSize_(defaultPointSize) {}

    std::optional<std::string> postScriptName(std::string_view name) const override {
        for (const Face& face : faces_) {
            if (face.postScriptName == name) return face.postScriptName;
        }
        for (const Face& face : faces_) {
            if (face.family == name) return face.postScriptName;
        }
        return std::nullopt;
    }
    std::string systemFontName() const override { return systemFontName_; }
    std::optional<std::string> fixedPitchFontName() const override { return fixedPitchFontName_; }
    double defaultPointSize() const override { return defaultPointSize_; }

  private:
    std::vector<Face> faces_;
    std::string systemFontName_;
    std::optional<std::string> fixedPitchFontName_;
    double defaultPointSize_;
};

// ---- fontconfig ---------------------------------------------------------------------------------

struct PatternDeleter {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

struct FontSetDeleter {
    void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
using FontSet = std::unique_ptr<FcFontSet, FontSetDeleter>;

struct ObjectSetDeleter {
    void operator()(FcObjectSet* set) const { FcObjectSetDestroy(set); }
};
using ObjectSet = std::unique_ptr<FcObjectSet, ObjectSetDeleter>;

const FcChar8* fc(const std::string& text) {
    return reinterpret_cast<const FcChar8*>(text.c_str());
}

std::optional<std::string> stringProperty(const FcPattern* pattern, const char* object, int n = 0) {
    FcChar8* value = nullptr;
    if (FcPatternGetString(pattern, object, n, &value) != FcResultMatch || value == nullptr) {
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(value));
}

// The font fontconfig would draw `request` with, after its configured substitutions; what the
// desktop means by "sans-serif" or "monospace".
Pattern bestMatch(FcConfig* config, FcPattern* request) {
    if (config == nullptr || request == nullptr) return nullptr;
    if (!FcConfigSubstitute(config, request, FcMatchPattern)) return nullptr;
    FcDefaultSubstitute(request);
    FcResult result = FcResultNoMatch;
    return Pattern(FcFontMatch(config, request, &result));
}

Pattern familyPattern(const std::string& family) {
    return Pattern(FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, fc(family), nullptr));
}

class FontconfigCatalogue final : public FontCatalogue {
  public:
    // A configuration of our own rather than fontconfig's implicit global one, which is never
    // released and trips leak checkers in every host's sanitizer build. No configuration (a broken
    // installation) finds no fonts.
    FontconfigCatalogue() : config_(FcInitLoadConfigAndFonts()) {}
    ~FontconfigCatalogue() override {
        if (config_ != nullptr) FcConfigDestroy(config_);
    }
    FontconfigCatalogue(const FontconfigCatalogue&) = delete;
    FontconfigCatalogue& operator=(const FontconfigCatalogue&) = delete;

    std::optional<std::string> postScriptName(std::string_view name) const override {
        const std::lock_guard lock(mutex_);
        std::string key(name);
        auto cached = lookups_.find(key);
        if (cached == lookups_.end()) {
            cached = lookups_.emplace(key, lookUp(key)).first;
        }
        return cached->second;
    }

    std::string systemFontName() const override {
        const std::lock_guard lock(mutex_);
        if (!systemFontName_) {
            systemFontName_ = "sans-serif";  // what to hand on when no font exists at all
            if (Pattern match = bestMatch(config_, familyPattern("sans-serif").get())) {
                if (auto name = stringProperty(match.get(), FC_POSTSCRIPT_NAME)) {
                    systemFontName_ = std::move(name);
                }
            }
        }
        return *systemFontName_;
    }

    std::optional<std::string> fixedPitchFontName() const override {
        const std::lock_guard lock(mutex_);
        if (!fixedPitchLookedUp_) {
            fixedPitchLookedUp_ = true;
            if (Pattern match = bestMatch(config_, familyPattern("monospace").get())) {
                // Without any monospaced font installed fontconfig still answers with some font;
                // that is no fixed-pitch font to offer.
                int spacing = FC_PROPORTIONAL;
                FcPatternGetInteger(match.get(), FC_SPACING, 0, &spacing);
                if (spacing == FC_MONO || spacing == FC_CHARCELL || spacing == FC_DUAL) {
                    fixedPitchFontName_ = stringProperty(match.get(), FC_POSTSCRIPT_NAME);
                }
            }
        }
        return fixedPitchFontName_;
    }

    double defaultPointSize() const override {
        const std::lock_guard lock(mutex_);
        if (defaultPointSize_ <= 0) {
            defaultPointSize_ = 12;  // fontconfig's own default when the configuration says none
            Pattern request = familyPattern("monospace");
            if (config_ != nullptr && request &&
                FcConfigSubstitute(config_, request.get(), FcMatchPattern)) {
                FcDefaultSubstitute(request.get());
                double size = 0;
                if (FcPatternGetDouble(request.get(), FC_SIZE, 0, &size) == FcResultMatch &&
                    size > 0) {
                    defaultPointSize_ = size;
                }
            }
        }
        return defaultPointSize_;
    }

  private:
    std::optional<std::string> lookUp(const std::string& name) const {
        if (name.empty() || config_ == nullptr) return std::nullopt;
        // An exact PostScript name first: listing compares the property itself, with none of the
        // matcher's substitutions.
        Pattern byName(
            FcPatternBuild(nullptr, FC_POSTSCRIPT_NAME, FcTypeString, fc(name), nullptr));
        ObjectSet properties(FcObjectSetBuild(FC_POSTSCRIPT_NAME, nullptr));
        if (!byName || !properties) return std::nullopt;
        FontSet listed(FcFontList(config_, byName.get(), properties.get()));
        if (listed) {
            for (int i = 0; i < listed->nfont; ++i) {
                if (stringProperty(listed->fonts[i], FC_POSTSCRIPT_NAME) == name) return name;
            }
        }
        // Else a family name: the matcher picks the family's regular face, but it also substitutes
        // look-alikes for missing families, so the answer counts only if it is of that family.
        Pattern match = bestMatch(config_, familyPattern(name).get());
        if (!match) return std::nullopt;
        for (int n = 0;; ++n) {
            const auto family = stringProperty(match.get(), FC_FAMILY, n);
            if (!family) return std::nullopt;
            if (FcStrCmpIgnoreCase(fc(*family), fc(name)) == 0) {
                return stringProperty(match.get(), FC_POSTSCRIPT_NAME);
            }
        }
    }

    FcConfig* const config_;
    mutable std::mutex mutex_;
    mutable std::map<std::string, std::optional<std::string>, std::less<>> lookups_;
    mutable std::optional<std::string> systemFontName_;
    mutable bool fixedPitchLookedUp_ = false;
    mutable std::optional<std::string> fixedPitchFontName_;
    mutable double defaultPointSize_ = 0;
};

}  // namespace

std::shared_ptr<const FontCatalogue> FontCatalogue::fontconfig() {
    static const auto catalogue = std::make_shared<const FontconfigCatalogue>();
    return catalogue;
}

std::shared_ptr<const FontCatalogue> FontCatalogue::fixed(
    std::vector<Face> faces, std::string systemFontName,
    std::optional<std::string> fixedPitchFontName, double defaultPointSize) {
    QUOD_PRECONDITION(!systemFontName.empty(), "a font catalogue needs a system font");
    QUOD_PRECONDITION(defaultPointSize > 0, "the default font size must be positive");
    return std::make_shared<const FixedFontCatalogue>(std::move(faces), std::move(systemFontName),
                                                      std::move(fixedPitchFontName),
                                                      defaultPointSize);
}

}  // namespace quod
