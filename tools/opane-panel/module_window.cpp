#include "tools/opane-panel/module_window.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace opane::panel_tool {
namespace {

constexpr int kFollowMs = 50;
constexpr int kKeys = 9;
constexpr int kKeysInRow = 3;
constexpr int kMargin = 2;  // screen pixels around the picture

QRgb rgb(simulator::Colour colour) {
    return qRgb(colour.red, colour.green, colour.blue);
}

QString factsOf(const simulator::ModuleState& state) {
    const auto levels = simulator::backlightLevels(state);
    const QString key = state.lastKey == simulator::kNoKey ? QStringLiteral("none")
                                                           : u'$' + QString::number(state.lastKey, 16).toUpper();
    return QStringLiteral("Node %1, %2, %3 bauds\nBacklight: red %4, green %5, %6\nLast key: %7")
        .arg(state.node)
        .arg(state.bus == simulator::Bus::rs485 ? QStringLiteral("RS485") : QStringLiteral("RS232"))
        .arg(state.baudRate)
        .arg(levels.red)
        .arg(levels.green)
        .arg(state.automaticBacklight ? QStringLiteral("automatic") : QStringLiteral("no control"))
        .arg(key);
}

}  // namespace

bool ModuleLook::operator==(const ModuleLook& other) const {
    return screen == other.screen && backlight.red == other.backlight.red && backlight.green == other.backlight.green;
}

ScreenPicture::ScreenPicture() {
    setObjectName("moduleScreen");
    setAccessibleName(QStringLiteral("Screen of the module"));
    setMinimumSize(kScreenWidth + 2 * kMargin, kScreenHeight + 2 * kMargin);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ScreenPicture::show(const ModuleLook& look) {
    look_ = look;
    update();
}

QSize ScreenPicture::sizeHint() const {
    return QSize(kScreenWidth + 2 * kMargin, kScreenHeight + 2 * kMargin) * simulator::kPictureScale;
}

void ScreenPicture::paintEvent(QPaintEvent* /*event*/) {
    QImage image(kScreenWidth + 2 * kMargin, kScreenHeight + 2 * kMargin, QImage::Format_RGB32);
    image.fill(rgb(simulator::background(look_.backlight)));
    for (int y = 0; y < kScreenHeight; ++y)
        for (int x = 0; x < kScreenWidth; ++x)
            if (isDark(look_.screen, x, y))
                image.setPixel(x + kMargin, y + kMargin, rgb(simulator::kInk));
    const double scale = std::min(double(width()) / image.width(), double(height()) / image.height());
    const QSizeF size(image.width() * scale, image.height() * scale);
    QPainter(this).drawImage(QRectF(QPointF((width() - size.width()) / 2, (height() - size.height()) / 2), size),
                             image);
}

ModuleWindow::ModuleWindow(simulator::ServedModule& module)
    : module_(module), picture_(new ScreenPicture), facts_(new QLabel) {
    setWindowTitle(QStringLiteral("Simulated module"));
    facts_->setObjectName("moduleFacts");
    facts_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* const remote = new QGroupBox(QStringLiteral("Infrared remote control"));
    auto* const keys = new QGridLayout(remote);
    for (int key = 1; key <= kKeys; ++key) {
        auto* const button = new QPushButton(QString::number(key));
        button->setObjectName(QStringLiteral("key%1").arg(key));
        button->setAccessibleName(QStringLiteral("Key %1").arg(key));
        button->setAutoDefault(true);
        connect(button, &QPushButton::clicked, this, [this, key] {
            module_.withModule([key](simulator::SimulatedModule& pressed) { pressed.pressKey(key); });
            follow();
        });
        keys->addWidget(button, (key - 1) / kKeysInRow, (key - 1) % kKeysInRow);
    }

    auto* const column = new QVBoxLayout(this);
    column->addWidget(picture_, 1);
    auto* const row = new QHBoxLayout;
    row->addWidget(facts_, 1);
    row->addWidget(remote);
    column->addLayout(row);

    connect(&timer_, &QTimer::timeout, this, [this] { follow(); });
    timer_.start(kFollowMs);
    follow();
}

void ModuleWindow::follow() {
    auto [look, facts] = module_.withModule([](const simulator::SimulatedModule& module) {
        const auto& state = module.state();
        return std::pair(ModuleLook{simulator::shownScreen(state), simulator::backlightLevels(state)}, factsOf(state));
    });
    facts_->setText(facts);
    if (shown_ == look)
        return;
    shown_ = look;
    picture_->show(look);
}

}  // namespace opane::panel_tool
