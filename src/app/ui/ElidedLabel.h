#pragma once

#include <QLabel>

namespace lumora::ui {

// A one-line label that shortens its text with "…" instead of widening its parent.
class ElidedLabel : public QLabel {
  public:
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);

    void setFullText(const QString& text);
    [[nodiscard]] const QString& fullText() const { return full_; }
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void elide();

    QString full_;
};

}  // namespace lumora::ui
