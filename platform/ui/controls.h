#pragma once

#include <functional>
#include <memory>
#include <string>

class QWidget;

namespace orvelin {

/// The initial state of a control. Sizes and positions are in points, which are Qt's
/// device-independent pixels, from the top left of the window's content.
struct Appearance {
  int left;
  int top;
  int width;
  int height;
  std::string text;  ///< UTF-8
  std::string font;  ///< "System" is the desktop's font
  int size;
  bool bold;
  bool enabled;
};

/// A control in a window's content; the window must outlive it.
class RectControl {
 public:
  RectControl(const RectControl&) = delete;
  RectControl& operator=(const RectControl&) = delete;
  virtual ~RectControl();

  bool Enabled() const;
  void Enabled(bool enabled);
  /// Sets the description in the tool tip and for screen readers, as plain text in UTF-8.
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

  /// Makes this the label of another control, for screen readers.
  void labels(const RectControl& control);
};

/// A button. Space, Return and Enter press it if it has the focus; it is never the default button.
class PushButton : public RectControl {
 public:
  PushButton(QWidget& content, const std::string& name, const Appearance& appearance,
             const std::function<void()>& action);
};

}  // namespace orvelin
