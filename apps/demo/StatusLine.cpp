#include "demo/StatusLine.h"

#include "quoddle/runtime/Localize.h"
#include "quoddle/text/SelectionStatistics.h"

namespace quod::demo {
namespace {

QString number(int64_t value) {
    return QString::fromStdString(Localize::intString(value));
}

}  // namespace

StatusLine::StatusLine(QStatusBar& bar)
    : QObject(&bar), selection_(new QLabel(&bar)), encoding_(new QLabel(&bar)) {
    selection_->setObjectName("selectionStatus");
    encoding_->setObjectName("encodingStatus");
    bar.addWidget(selection_, 1);
    bar.addPermanentWidget(encoding_);
}

void StatusLine::update(const QuodTextView& view) {
    const Range selected = view.selectedRange();
    const int64_t line = view.textStorage().lineIndexOfPosition(selected.location) + 1;
    QString text = QString::fromStdString(Localize::line()) + " " + number(line) + "   " +
                   QString::fromStdString(Localize::position()) + " " + number(selected.location);
    if (selected.length <= countLimit) {
        const std::u16string selectedText = view.textStorage().substringWithRange(selected);
        const auto count =
            Text::selectionCount(selectedText, {{0, static_cast<int64_t>(selectedText.size())}});
        text += "   " + number(count.characters) + " " +
                QString::fromStdString(Localize::Lowercase::characters()) + "   " +
                number(count.words) + " " + QString::fromStdString(Localize::Lowercase::words());
    } else {
        text += QString::fromUtf8("   — ") +
                QString::fromStdString(Localize::Lowercase::characters()) +
                QString::fromUtf8("   — ") + QString::fromStdString(Localize::Lowercase::words());
    }
    selection_->setText(text);
}

void StatusLine::setEncoding(EncodingNumber encoding) {
    encoding_->setText(QString::fromUtf8(localizedEncodingName(encoding)));
}

}  // namespace quod::demo
