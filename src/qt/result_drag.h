// Dragging the result out of the viewer, as a PNG file.
#pragma once

#include <QObject>
#include <QPoint>
#include <QString>
#include <functional>

class QDrag;
class QMouseEvent;

namespace skarnel {

class Viewer;

/// A drag with the move tool moves the picture. Where there is nothing to move, since all of it is
/// seen, the same drag takes the result out; with Alt held it does so always.
class ResultDrag final : public QObject {
    Q_OBJECT
  public:
    /// Writes the file to drag, at full resolution, and gives back its path; empty where there is
    /// no result.
    using MakeFile = std::function<QString()>;

    /// Lets the user carry the drag to its end; blocks until then.
    using Carry = std::function<void(QDrag& drag)>;

    ResultDrag(Viewer& viewer, MakeFile makeFile);

    /// Another way to carry drags than the toolkit's own.
    void setCarry(Carry carry) { carry_ = std::move(carry); }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    bool takesOut(const QMouseEvent& press) const;
    void drag();

    Viewer& viewer_;
    MakeFile makeFile_;
    Carry carry_;
    QPoint start_;
    bool armed_ = false;
};

}  // namespace skarnel
