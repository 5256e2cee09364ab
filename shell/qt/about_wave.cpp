#include "shell/qt/about_wave.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPixmap>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace {

// Blue through white to red, the usual colours of a wave image.
QRgb WaveColour(double v) {
    const double a = std::clamp(v, -1.0, 1.0);
    const int up = static_cast<int>(255 * (1 - std::fabs(a)));
    return a >= 0 ? qRgb(255, up, up) : qRgb(up, up, 255);
}

}  // namespace

QImage CAboutWave::DrawFrame(int frame, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    const double phase = 2 * M_PI * frame / kFrames;
    const double cx = width / 2.0, cy = height / 2.0, radius = std::min(cx, cy) - 2;
    // The wave starts at a driver on the left rim and is damped as it travels.
    const double sx = cx - radius, sy = cy;
    const double wavelength = radius / 2.2;
    for (int y = 0; y < height; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const double dx = x - cx, dy = y - cy;
            if (dx * dx + dy * dy > radius * radius) {
                line[x] = qRgb(24, 24, 32);
                continue;
            }
            const double r = std::hypot(x - sx, y - sy);
            const double v =
                std::cos(2 * M_PI * r / wavelength - phase) * std::exp(-r / (1.6 * radius));
            line[x] = WaveColour(v);
        }
    }
    return image;
}

CAboutWave::CAboutWave(QWidget* parent) : QDialog(parent), picture_(new QLabel(this)) {
    setObjectName("about_wave");
    setWindowTitle("about Quelmor");
    for (int f = 0; f < kFrames; ++f) frames_.push_back(DrawFrame(f, 220, 160));
    picture_->setObjectName("about_picture");
    picture_->setAlignment(Qt::AlignCenter);
    picture_->setPixmap(QPixmap::fromImage(frames_[0]));
    auto* text = new QLabel(
        "<b>Quelmor</b><br>magnetic resonance elastography workstation<br>compiled " __DATE__,
        this);
    text->setAlignment(Qt::AlignCenter);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(picture_);
    layout->addWidget(text);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(&timer_, &QTimer::timeout, this, &CAboutWave::OnTick);
    timer_.start(kTickMs);
}

void CAboutWave::OnTick() {
    frame_ = (frame_ + 1) % kFrames;
    picture_->setPixmap(QPixmap::fromImage(frames_[frame_]));
}
