// A drawing surface that keeps every call as a value, for tests and benchmarks.
//
// `commands()` lists what the current frame drew, in order; `clear()` starts a new frame and keeps
// the list's memory for it. `setDirtyRect` limits
// `needsToDrawRect` to one region, as when only part of a view was damaged; by default the whole
// surface needs drawing.
#pragma once

#include <optional>
#include <variant>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/gutter/DrawingSurface.h"

namespace quod {

class QUODDLE_EXPORT RecordingSurface : public DrawingSurface {
  public:
    struct Fill {
        Rect rect;
        Color color;
    };
    struct Line {
        Point from;
        Point to;
        double lineWidth;
        Color color;
    };
    using Command = std::variant<Fill, Line, TextRun>;

    explicit RecordingSurface(double rasterizationScale = 1.0)
        : rasterizationScale_(rasterizationScale) {}

    [[nodiscard]] double rasterizationScale() const override { return rasterizationScale_; }
    [[nodiscard]] bool needsToDrawRect(Rect rect) const override;
    void clear() override { commands_.clear(); }
    void fillRect(Rect rect, const Color& color) override;
    void strokeLine(Point from, Point to, double lineWidth, const Color& color) override;
    void drawText(const TextRun& run) override;

    // No value: everything needs drawing.
    void setDirtyRect(std::optional<Rect> rect) { dirtyRect_ = rect; }

    [[nodiscard]] const std::vector<Command>& commands() const { return commands_; }
    // The text runs of the frame, in drawing order.
    [[nodiscard]] std::vector<TextRun> texts() const;

  private:
    double rasterizationScale_;
    std::optional<Rect> dirtyRect_;
    std::vector<Command> commands_;
};

}  // namespace quod
