#include "platform/ui/controls.h"

#include <QFont>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <utility>

#include "platform/ui/useraction.h"

namespace orvelin {

namespace {

QFont fontOf(const Appearance& appearance) {
  QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  if (appearance.font != "System") font.setFamily(QString::fromStdString(appearance.font));
  font.setPixelSize(appearance.size);  // Qt's points depend on the screen
  font.setBold(appearance.bold);
  return font;
}

/// A button that Return and Enter press. A QPushButton accepts them only if it is the default.
class Button : public QPushButton {
 public:
  using QPushButton::QPushButton;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
      click();
    else
      QPushButton::keyPressEvent(event);
  }
};

}  // namespace

RectControl::RectControl(std::unique_ptr<QWidget> widget, const std::string& name,
                         const Appearance& appearance)
    : widget_(std::move(widget)) {
  widget_->setObjectName(QString::fromStdString(name));
  widget_->setGeometry(appearance.left, appearance.top, appearance.width, appearance.height);
  widget_->setFont(fontOf(appearance));
  widget_->setEnabled(appearance.enabled);
}

RectControl::~RectControl() = default;

bool RectControl::Enabled() const { return widget_->isEnabled(); }

void RectControl::Enabled(bool enabled) { widget_->setEnabled(enabled); }

void RectControl::describe(const std::string& text) {
  const QString plain = QString::fromStdString(text);
  widget_->setAccessibleDescription(plain);
  // Qt would interpret a file name such as <b> as markup.
  widget_->setToolTip("<p style='white-space:pre'>" + plain.toHtmlEscaped());
}

StaticText::StaticText(QWidget& content, const std::string& name, const Appearance& appearance)
    : RectControl(std::make_unique<QLabel>(QString::fromStdString(appearance.text), &content), name,
                  appearance) {}

void StaticText::labels(const RectControl& control) {
  static_cast<QLabel&>(widget()).setBuddy(control.widget_.get());
}

PushButton::PushButton(QWidget& content, const std::string& name, const Appearance& appearance,
                       const std::function<void()>& action)
    : RectControl(std::make_unique<Button>(QString::fromStdString(appearance.text), &content), name,
                  appearance) {
  auto& button = static_cast<Button&>(widget());
  QObject::connect(&button, &QPushButton::clicked, [action] { performAction(action); });
}

}  // namespace orvelin
