#pragma once

#include <functional>
#include <memory>
#include <string>

class QWidget;

namespace orvelin {

/// How a control looks when it is made. Sizes and positions are in points, 72 to the inch of a
/// standard screen, from the top left of the window's content.
struct Appearance {
  int left;
  int top;
  int width;
  int height;
  std::string text;  ///< UTF-8
  std::string font;  ///< "System" for the desktop's own
  int size;
  bool bold;
  bool enabled;
};

/// A control in a window's content, which must outlive it.
class RectControl {
 public:
  RectControl(const RectControl&) = delete;
  RectControl& operator=(const RectControl&) = delete;
  virtual ~RectControl();

  bool Enabled() const;
  void Enabled(bool enabled);
  /// Describes the control, in a tool tip and to screen readers. UTF-8; shown as it is.
  void describe(const std::string& text);

 protected:
  RectControl(std::unique_ptr<QWidget> widget, const std::string& name,
              const Appearance& appearance);
  QWidget& widget() const { return *widget_; }

 private:
  friend class StaticText;
  std::unique_ptr<QWidget> widget_;
};

class StaticText : public RectControl {
 public:
  StaticText(QWidget& content, const std::string& name, const Appearance& appearance);

  /// Makes this text the other control's label for screen readers.
  void labels(const RectControl& control);
};

/// A button that Space, Return and Enter press while it has the focus; never a window's default.
class PushButton : public RectControl {
 public:
  PushButton(QWidget& content, const std::string& name, const Appearance& appearance,
             const std::function<void()>& action);
};

}  // namespace orvelin
