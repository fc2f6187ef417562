#include "quoddle/gutter/RecordingSurface.h"

namespace quod {

bool RecordingSurface::needsToDrawRect(Rect rect) const {
    return !dirtyRect_ || dirtyRect_->intersects(rect);
}

void RecordingSurface::fillRect(Rect rect, const Color& color) {
    commands_.emplace_back(Fill{rect, color});
}

void RecordingSurface::strokeLine(Point from, Point to, double lineWidth, const Color& color) {
    commands_.emplace_back(Line{from, to, lineWidth, color});
}

void RecordingSurface::drawText(const TextRun& run) {
    commands_.emplace_back(run);
}

std::vector<TextRun> RecordingSurface::texts() const {
    std::vector<TextRun> runs;
    for (const Command& command : commands_) {
        if (const auto* run = std::get_if<TextRun>(&command)) runs.push_back(*run);
    }
    return runs;
}

}  // namespace quod
