#include "quoddle/qt/GutterWidget.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <cmath>
#include <functional>

#include "quoddle/gutter/LineNumberProtocol.h"
#include "quoddle/qt/QPainterSurface.h"
#include "quoddle/qt/QtPlatform.h"
#include "quoddle/qt/TextViewScrollGeometry.h"
#include "quoddle/qt/TextViewWidget.h"

namespace quod {
namespace {

class WidthDelegate : public LineNumberProtocol {
  public:
    explicit WidthDelegate(std::function<void(double)> widen) : widen_(std::move(widen)) {}
    void lineNumberViewNeedsWidth(LineNumberView&, double width) override { widen_(width); }

  private:
    std::function<void(double)> widen_;
};

}  // namespace

GutterWidget::GutterWidget(TextViewWidget& textView, QWidget* parent)
    : QWidget(parent),
      textView_(&textView),
      scrollGeometry_(std::make_shared<TextViewScrollGeometry>(textView)),
      delegate_(std::make_shared<WidthDelegate>([this](double width) { widen(width); })) {
    // Only a gutter without a text view draws nothing; the background then shows.
    setAutoFillBackground(true);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    // Qt's fonts and metrics before the core measures its digits.
    QtPlatform::install();
    displayObserver_ = lineNumberView_.displayNeeded.connect([this] { update(); });
    connect(&textView, &TextViewWidget::textViewChanged, this, &GutterWidget::setUp);
    lineNumberView_.setBounds({{0, 0}, {0, static_cast<double>(height())}});
    setUp();
}

GutterWidget::~GutterWidget() = default;

void GutterWidget::setUp() {
    if (textView_.isNull()) return;
    const std::shared_ptr<QuodTextView>& view = textView_->sharedTextView();
    lineNumberView_.setUpWithTextStorage(std::shared_ptr<TextStorage>(view, &view->textStorage()),
                                         scrollGeometry_, delegate_);
}

void GutterWidget::widen(double width) {
    setFixedWidth(static_cast<int>(std::ceil(width)));
    lineNumberView_.setBounds({{0, 0}, {width, static_cast<double>(height())}});
}

void GutterWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    lineNumberView_.setBounds(
        {{0, 0}, {static_cast<double>(width()), static_cast<double>(height())}});
}

void GutterWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    QPainterSurface surface(painter, event->region());
    lineNumberView_.updateLayer(surface);
}

void GutterWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QWidget::mousePressEvent(event);
    if (!textView_.isNull()) textView_->setFocus(Qt::MouseFocusReason);
    lineNumberView_.mouseDown({event->position().x(), event->position().y()});
}

void GutterWidget::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return QWidget::mouseMoveEvent(event);
    lineNumberView_.mouseDragged({event->position().x(), event->position().y()});
}

}  // namespace quod
