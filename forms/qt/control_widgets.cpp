#include "forms/qt/control_widgets.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabWidget>

#include "forms/qt/accessible_names.h"
#include "forms/qt/grid.h"
#include "forms/qt/qt_text.h"
#include "forms/qt/sized_widgets.h"

namespace opane::qt {
namespace {

using window::Change;

/// Makes the widgets of one container. Each visit ends in add() or, for a page, in a page of its tab widget.
class WidgetMaker final : public window::ControlVisitor {
public:
    WidgetMaker(const window::Container& container, QWidget& in) : in_(in), grid_(container) {
        for (window::Control* const control : container.controls())
            control->accept(*this);
        in.setLayout(grid_.layout());
    }

    void visit(window::Label& control) override {
        auto* const widget = new QLabel(toQt(control.caption()));
        widget->setTextFormat(Qt::PlainText);
        widget->setMinimumHeight(QComboBox().sizeHint().height());  // level with the boxes of its row
        add(control, widget, [&control, widget](Change what) {
            if (what == Change::caption)
                widget->setText(toQt(control.caption()));
        });
    }

    void visit(window::Line& control) override {
        auto* const widget = new QFrame;
        widget->setFrameStyle(QFrame::HLine | QFrame::Sunken);
        add(control, widget, [](Change) {});
    }

    void visit(window::TextBox& control) override {
        if (control.multiLine())
            addBox(control, new LinesBox(control.style()));
        else
            addBox(control, new LineBox(control.style().characters));
    }

    void visit(window::ComboBox& control) override {
        auto* const widget = new QComboBox;
        widget->setFocusPolicy(Qt::StrongFocus);  // a wheel that passes over it must not choose
        widget->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        widget->setMinimumContentsLength(3);
        QObject::connect(widget, &QComboBox::activated, widget, [&control](int index) { control.userSelects(index); });
        const auto show = [&control, widget](Change what) {
            const QSignalBlocker blocker(widget);
            const auto& entries = control.entries();
            if (what == Change::entries) {
                for (std::size_t i = 0; i < entries.size(); ++i) {
                    const int index = static_cast<int>(i);
                    if (index == widget->count())
                        widget->addItem(toQt(entries[i]));
                    else
                        widget->setItemText(index, toQt(entries[i]));
                }
            }
            if (what == Change::entries || what == Change::selection)
                widget->setCurrentIndex(control.selected());
        };
        show(Change::entries);
        add(control, widget, show);
    }

    void visit(window::OptionButton& control) override {
        auto* const widget = new QRadioButton(captionToQt(control.caption()));
        groupOf(control)->addButton(widget);
        QObject::connect(widget, &QRadioButton::clicked, widget, [&control] { control.click(); });
        const auto show = [&control, widget](Change what) {
            if (what == Change::caption)
                widget->setText(captionToQt(control.caption()));
            if (what == Change::selection)
                showSelection(*widget, control.selected());
        };
        show(Change::selection);
        add(control, widget, show);
    }

    void visit(window::CommandButton& control) override {
        auto* const widget = new QPushButton(captionToQt(control.caption()));
        widget->setAutoDefault(true);  // Enter presses it
        QObject::connect(widget, &QPushButton::clicked, widget, [&control] { control.click(); });
        add(control, widget, [&control, widget](Change what) {
            if (what == Change::caption)
                widget->setText(captionToQt(control.caption()));
        });
    }

    void visit(window::Frame& control) override {
        auto* const widget = new QGroupBox(captionToQt(control.caption()));
        keepPlace(*widget);  // the window stays as large as it is
        add(control, widget, [&control, widget](Change what) {
            if (what == Change::caption)
                widget->setTitle(captionToQt(control.caption()));
        });
        showControls(control, *widget);
    }

    void visit(window::TabControl& control) override {
        auto* const widget = new QTabWidget;
        QObject::connect(widget, &QTabWidget::currentChanged, widget,
                         [&control](int index) { control.userSelects(index); });
        const auto show = [&control, widget](Change what) {
            if (what != Change::selection)
                return;
            const QSignalBlocker blocker(widget);
            widget->setCurrentIndex(control.selected());
        };
        add(control, widget, show);
        {
            const QSignalBlocker blocker(widget);
            for (window::Control* const page : control.controls())
                addPage(dynamic_cast<window::TabPage&>(*page), *widget);
        }
        show(Change::selection);
    }

    void visit(window::TabPage&) override {}  // made with its tab control

private:
    /// Puts the widget into its place and shows there what every control has.
    /// @param show  shows what its kind alone has
    template <class Show>
    void add(window::Control& control, QWidget* widget, Show show) {
        grid_.add(control, widget);
        widget->setParent(&in_);
        widget->setObjectName(toQt(control.name()));
        widget->setAccessibleName(toQt(accessibleName(control)));
        widget->setEnabled(control.enabled());
        widget->setVisible(control.visible());
        control.observer([&control, widget, show](Change what) {
            if (what == Change::enabled)
                widget->setEnabled(control.enabled());
            else if (what == Change::visible)
                widget->setVisible(control.visible());
            else
                show(what);
        });
    }

    static QString textOf(const QLineEdit& box) { return box.text(); }
    static QString textOf(const QPlainTextEdit& box) { return box.toPlainText(); }
    static void setText(QLineEdit& box, const QString& text) { box.setText(text); }
    static void setText(QPlainTextEdit& box, const QString& text) { box.setPlainText(text); }

    template <class Box>
    void addBox(window::TextBox& control, Box* widget) {
        widget->setReadOnly(control.style().readOnly);
        const auto show = [&control, widget](Change what) {
            const QString text = linesToQt(control.text());
            if (what != Change::text || textOf(*widget) == text)
                return;  // not while it is typed: that would move the cursor
            const QSignalBlocker blocker(widget);
            setText(*widget, text);
        };
        show(Change::text);
        QObject::connect(widget, &Box::textChanged, widget,
                         [&control, widget] { control.userTypes(fromQt(textOf(*widget))); });
        add(control, widget, show);
    }

    void addPage(window::TabPage& page, QTabWidget& tabs) {
        auto* const widget = new QWidget;
        widget->setObjectName(toQt(page.name()));
        widget->setAccessibleName(toQt(page.caption()));
        showControls(page, *widget);
        const int index = tabs.addTab(widget, captionToQt(page.caption()));
        const auto show = [&page, &tabs, index](Change what) {
            if (what == Change::caption)
                tabs.setTabText(index, captionToQt(page.caption()));
            if (what == Change::enabled)
                tabs.setTabEnabled(index, page.enabled());
            if (what == Change::visible)
                tabs.setTabVisible(index, page.visible());
        };
        show(Change::enabled);
        show(Change::visible);
        page.observer(show);
    }

    /// One for the buttons of a control array, which share their name up to the index.
    QButtonGroup* groupOf(const window::OptionButton& control) {
        const QString name = toQt(control.name()).section(u'(', 0, 0);
        if (auto* const made = in_.findChild<QButtonGroup*>(name, Qt::FindDirectChildrenOnly))
            return made;
        auto* const group = new QButtonGroup(&in_);
        group->setObjectName(name);
        return group;
    }

    static void showSelection(QRadioButton& button, bool selected) {
        QButtonGroup* const group = button.group();
        group->setExclusive(selected);  // an exclusive group lets no button be taken back
        button.setChecked(selected);
        group->setExclusive(true);
    }

    QWidget& in_;
    Grid grid_;
};

}  // namespace

void showControls(const window::Container& container, QWidget& in) {
    const WidgetMaker maker(container, in);
}

void untie(const window::Container& container) {
    for (window::Control* const control : container.controls()) {
        control->observer(nullptr);
        if (const auto* const inner = dynamic_cast<const window::Container*>(control))
            untie(*inner);
    }
}

void showReadOnlyColours(QWidget& in) {
    const auto colour = [&in](auto* box) {
        if (!box->isReadOnly())
            return;
        QPalette palette;
        palette.setColor(QPalette::Base, in.palette().color(QPalette::Window));
        box->setPalette(palette);
    };
    for (auto* const box : in.findChildren<LineBox*>(Qt::FindChildrenRecursively))
        colour(box);
    for (auto* const box : in.findChildren<LinesBox*>(Qt::FindChildrenRecursively))
        colour(box);
}

}  // namespace opane::qt
