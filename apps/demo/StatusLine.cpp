#include "demo/StatusLine.h"

#include "quoddle/runtime/Localize.h"

namespace quod::demo {
namespace {

QString number(int64_t value) {
    return QString::fromStdString(Localize::intString(value));
}

// Units counted per visit of the storage, and the time a slice may take before it lets events in.
constexpr int64_t unitsPerVisit = 1 << 20;
constexpr qint64 sliceMilliseconds = 8;

}  // namespace

StatusLine::StatusLine(QStatusBar& bar)
    : QObject(&bar), selection_(new QLabel(&bar)), encoding_(new QLabel(&bar)),
      slices_(new QTimer(this)) {
    selection_->setObjectName("selectionStatus");
    encoding_->setObjectName("encodingStatus");
    bar.addWidget(selection_, 1);
    bar.addPermanentWidget(encoding_);
    slices_->setInterval(0);
    connect(slices_, &QTimer::timeout, this, [this] { countSlice(sliceMilliseconds); });
}

void StatusLine::update(const QuodTextView& view) {
    const Range selected = view.selectedRange();
    const int64_t line = view.textStorage().lineIndexOfPosition(selected.location) + 1;
    place_ = QString::fromStdString(Localize::line()) + " " + number(line) + "   " +
             QString::fromStdString(Localize::position()) + " " + number(selected.location);
    slices_->stop();
    counting_.reset();
    if (selected.length > countLimit) {
        show(QString::fromUtf8("—"), QString::fromUtf8("—"));
        return;
    }
    counting_.emplace(Counting{&view, selected, view.textStorage().length(), selected.location,
                               Text::SelectionCounter()});
    if (selected.length <= countNowLimit) {
        countSlice(std::nullopt);
        return;
    }
    show(QString::fromUtf8("…"), QString::fromUtf8("…"));
    slices_->start();
}

void StatusLine::countSlice(std::optional<qint64> milliseconds) {
    if (!counting_) return;
    Counting& counting = *counting_;
    const TextStorage& storage = counting.view->textStorage();
    // Every change of text or selection calls update, which starts over; this guards the rest.
    if (counting.view->selectedRange() != counting.range ||
        storage.length() != counting.textLength) {
        slices_->stop();
        counting_.reset();
        return;
    }
    QElapsedTimer elapsed;
    elapsed.start();
    const int64_t end = counting.range.end();
    while (counting.next < end && (!milliseconds || elapsed.elapsed() < *milliseconds)) {
        const Range visit{counting.next, std::min(unitsPerVisit, end - counting.next)};
        storage.forEachPiece(visit, [&](std::u16string_view piece) { counting.counter.add(piece); });
        counting.next = visit.end();
    }
    if (counting.next < end) return;
    const Text::SelectionCount count = counting.counter.count();
    slices_->stop();
    counting_.reset();
    show(number(count.characters), number(count.words));
}

void StatusLine::show(const QString& characters, const QString& words) {
    selection_->setText(place_ + "   " + characters + " " +
                        QString::fromStdString(Localize::Lowercase::characters()) + "   " + words +
                        " " + QString::fromStdString(Localize::Lowercase::words()));
}

void StatusLine::setEncoding(EncodingNumber encoding) {
    encoding_->setText(QString::fromUtf8(localizedEncodingName(encoding)));
}

}  // namespace quod::demo
