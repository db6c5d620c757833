#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A window as plain objects: they hold what it shows and run its handlers, and need no screen. A view shows them: it
// makes a widget of each control (ControlVisitor), sets an observer on each to hear what changed, and calls the
// operations named userX and click for what the person does. Message boxes and file dialogs are the thread's
// (services.h). Everything runs on the thread that made the form. Texts are UTF-8.
//
// One handler runs at a time. While it does, the form is busy: an action of the person is ignored, whoever pumps events
// meanwhile, and the control reports its unchanged state again, so that a view puts its widget back. Only a wish to
// cancel long work gets through, and a wish to close, which is kept until the handler has ended. Ignored alike is an
// action on a control that is disabled or hidden, or that lies in such a container, and on a form that is not loaded.

namespace opane::window {

class Control;
class Form;

/// What a control or the form reports to its observer.
enum class Change {
    caption,
    text,
    entries,    ///< of a combo box
    selection,  ///< of a combo box, an option button or a tab control
    enabled,
    visible,
    busy,      ///< of the form: a handler has begun or ended
    progress,  ///< of the form: its long work has begun, moved on or ended
    closed,    ///< of the form, the last that it reports
};

/// Whatever reports changes to a view.
class Observed {
public:
    using Observer = std::function<void(Change)>;

    /// Sets the one observer, or none. It is called in the middle of a handler: it must not throw, end any of these
    /// objects or run events.
    void observer(Observer newObserver) { observer_ = std::move(newObserver); }

protected:
    Observed() = default;
    ~Observed() = default;
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

    void changed(Change what) const {
        if (observer_)
            observer_(what);
    }
    template <class Value>
    void set(Value& field, const Value& value, Change what) {
        if (field == value)
            return;
        field = value;
        changed(what);
    }

private:
    Observer observer_;
};

/// Where a control lies in the grid of its container, from 0.
struct Place {
    int row = 0;
    int column = 0;
    int columnSpan = 1;
    int rowSpan = 1;
};

/// What holds controls: the form, a frame, a page of a tab control, and the tab control that holds its pages.
class Container {
public:
    Form& form() const { return form_; }
    /// In tab order, which is the order of their creation.
    const std::vector<Control*>& controls() const { return controls_; }
    /// This container as a control; null for the form.
    virtual const Control* asControl() const = 0;

protected:
    explicit Container(Form& form) : form_(form) {}
    ~Container() = default;
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

private:
    friend class Control;
    Form& form_;
    std::vector<Control*> controls_;
};

class Label;
class Line;
class TextBox;
class ComboBox;
class OptionButton;
class CommandButton;
class Frame;
class TabControl;
class TabPage;

/// Tells a view which kind a control is.
class ControlVisitor {
public:
    virtual ~ControlVisitor() = default;
    virtual void visit(Label& control) = 0;
    virtual void visit(Line& control) = 0;
    virtual void visit(TextBox& control) = 0;
    virtual void visit(ComboBox& control) = 0;
    virtual void visit(OptionButton& control) = 0;
    virtual void visit(CommandButton& control) = 0;
    virtual void visit(Frame& control) = 0;
    virtual void visit(TabControl& control) = 0;
    virtual void visit(TabPage& control) = 0;
};

class Control : public Observed {
public:
    virtual ~Control() = default;
    virtual void accept(ControlVisitor& visitor) = 0;

    const std::string& name() const { return name_; }  ///< unique in its form, "optSens(0)" in a control array
    const Container& container() const { return container_; }
    Place place() const { return place_; }

    /// Its own setting; one in a hidden or disabled container does not show or take input either.
    bool enabled() const { return enabled_; }
    void enabled(bool value) { set(enabled_, value, Change::enabled); }
    bool visible() const { return visible_; }
    void visible(bool value) { set(visible_, value, Change::visible); }

protected:
    /// The container, and the form, outlive the control.
    Control(Container& container, std::string name, Place place);

    /// Whether an action of the person counts. When not, reports what the person's action would have changed.
    bool takesInput(Change whatItShows) const;
    Form& owner() const { return container_.form(); }

private:
    Container& container_;
    std::string name_;
    Place place_;
    bool enabled_ = true;
    bool visible_ = true;
};

/// A text that the person cannot change. Its text is its caption, also of buttons, frames and pages.
class Captioned : public Control {
public:
    const std::string& caption() const { return caption_; }
    void caption(const std::string& value) { set(caption_, value, Change::caption); }

protected:
    Captioned(Container& container, std::string name, std::string caption, Place place)
        : Control(container, std::move(name), place), caption_(std::move(caption)) {}

private:
    std::string caption_;
};

class Label final : public Captioned {
public:
    Label(Container& container, std::string name, std::string caption, Place place)
        : Captioned(container, std::move(name), std::move(caption), place) {}
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }
};

/// A horizontal separator line.
class Line final : public Control {
public:
    Line(Container& container, std::string name, Place place) : Control(container, std::move(name), place) {}
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }
};

class TextBox final : public Control {
public:
    /// What stays the same for the life of the box.
    struct Style {
        int characters = 8;  ///< width that a view makes room for
        /// More than one: multi-line; it takes spare room of its container. A line that is too long for it is folded
        /// when it is shown, which puts no line break into its text.
        int lines = 1;
        bool readOnly = false;
        bool fixedPitch = false;
        bool verticalScrollBar = false;
    };

    TextBox(Container& container, std::string name, Place place, Style style, std::string text = {})
        : Control(container, std::move(name), place), style_(style), text_(std::move(text)) {}
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }

    const Style& style() const { return style_; }
    bool multiLine() const { return style_.lines > 1; }

    /// Line breaks are carriage return and line feed.
    const std::string& text() const { return text_; }
    void text(const std::string& value) { set(text_, value, Change::text); }

    /// The whole text as the person has it now. Line feeds alone are stored with a carriage return, none in a box of
    /// one line. A read-only box ignores it.
    void userTypes(const std::string& value);

private:
    Style style_;
    std::string text_;
};

/// A list of texts of which one is chosen; it cannot be typed into.
class ComboBox final : public Control {
public:
    static constexpr int kNone = -1;

    ComboBox(Container& container, std::string name, Place place) : Control(container, std::move(name), place) {}
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }

    const std::vector<std::string>& entries() const { return entries_; }
    /// Writes an entry at its index; one more than there are adds it.
    void entry(std::size_t index, const std::string& value);

    int selected() const { return selected_; }
    /// Selects an entry from code and runs the handler; neither when it is selected already.
    /// @throws RuntimeError 9 (subscript) when there is no such entry
    void select(int index);

    /// The text of the selected entry, empty without one.
    std::string text() const;
    /// Selects the entry of that text, or none when there is none. Runs no handler.
    void text(const std::string& value);

    /// The person has picked an entry: as select.
    void userSelects(int index);

    std::function<void()> onClick;

private:
    std::vector<std::string> entries_;
    int selected_ = kNone;
};

class OptionGroup;

/// One of a group of which at most one is selected.
class OptionButton final : public Captioned {
public:
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }

    bool selected() const;
    /// The person has picked it: as OptionGroup::select.
    void click();

    /// Made by its group.
    OptionButton(Container& container, OptionGroup& group, int index, std::string name, std::string caption,
                 Place place);

private:
    friend class OptionGroup;
    OptionGroup& group_;
    int index_;
};

/// An indexed control array of option buttons that exclude each other. It is no control itself.
class OptionGroup {
public:
    static constexpr int kNone = -1;

    /// Makes the buttons "name(0)", "name(1)" ... below each other, the first one at that place.
    OptionGroup(Container& container, const std::string& name, const std::vector<std::string>& captions, Place first,
                int selected = kNone);
    OptionGroup(const OptionGroup&) = delete;
    OptionGroup& operator=(const OptionGroup&) = delete;

    /// @param index  0 or more and below the number of buttons
    OptionButton& operator[](int index) { return buttons_[static_cast<std::size_t>(index)]; }

    int selected() const { return selected_; }
    /// Selects a button from code and runs the handler; neither when it is selected already.
    /// @throws RuntimeError 9 (subscript) when there is no such button
    void select(int index);

    std::function<void()> onClick;

private:
    friend class OptionButton;
    Form& form_;
    std::deque<OptionButton> buttons_;  // never moved
    int selected_;
};

class CommandButton final : public Captioned {
public:
    CommandButton(Container& container, std::string name, std::string caption, Place place)
        : Captioned(container, std::move(name), std::move(caption), place) {}
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }

    /// The person has pressed it: runs the handler to its end.
    void click();

    std::function<void()> onClick;
};

/// A border with a caption around its controls.
class Frame final : public Captioned, public Container {
public:
    Frame(Container& container, std::string name, std::string caption, Place place)
        : Captioned(container, std::move(name), std::move(caption), place), Container(container.form()) {}
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }
    const Control* asControl() const override { return this; }
};

/// Shows one of its pages. Its controls are the pages, in their order.
class TabControl final : public Control, public Container {
public:
    TabControl(Container& container, std::string name, Place place)
        : Control(container, std::move(name), place), Container(container.form()) {}
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }
    const Control* asControl() const override { return this; }

    int selected() const { return selected_; }  ///< index of the page; 0 at first
    /// @throws RuntimeError 9 (subscript) when there is no such page
    void select(int index);
    void userSelects(int index);

private:
    int selected_ = 0;
};

class TabPage final : public Captioned, public Container {
public:
    TabPage(TabControl& tabs, std::string name, std::string caption);
    void accept(ControlVisitor& visitor) override { visitor.visit(*this); }
    const Control* asControl() const override { return this; }
};

/// Where long work of a handler stands.
struct Progress {
    std::string text;
    int value = 0;
    int maximum = 0;
    bool cancelRequested = false;
};

/// A window. Its owner derives from it, has the controls as members and sets their handlers; it lives through one load
/// and one unload. Not to be ended while it is busy.
class Form : public Container, public Observed {
public:
    /// @param errorTitle  title of the box that shows a raised error
    Form(std::string caption, std::string errorTitle);
    virtual ~Form() = default;
    const Control* asControl() const override { return nullptr; }

    const std::string& caption() const { return caption_; }

    /// Runs Form_Load, as a handler. Once, before the form is shown.
    void load();
    bool loaded() const { return loaded_; }

    /// The person wants the window closed: runs Form_Unload, as a handler, then reports Change::closed; at once, or as
    /// soon as the running handler has ended. Never refused.
    void userCloses();

    /// Whether a handler is running.
    bool busy() const { return busy_; }

    /// Runs a handler. The outermost one makes the form busy, and what it raises ends here: it is shown in a message
    /// box with its number and text, after which afterError tidies up. Within a running handler it is just called.
    void run(const std::function<void()>& handler);

    /// The control of that name; null when there is none.
    Control* find(std::string_view name) const;

    /// The long work that is under way; nothing when there is none.
    const std::optional<Progress>& progress() const { return progress_; }
    /// The person wants it cancelled; it ends when its handler looks next.
    void userCancels();

protected:
    virtual void Form_Load() {}
    virtual void Form_Unload() {}
    /// Brings the window to a sound state after a handler has raised; the box has been answered. What it raises itself
    /// is dropped.
    virtual void afterError() {}

    /// Labels and lines that no handler touches, owned by the form.
    void label(Container& container, std::string name, std::string caption, Place place);
    void line(Container& container, std::string name, Place place);

private:
    friend class LongWork;
    void runGuarded(const std::function<void()>& handler);
    void showError(const std::string& text) const;
    void unload();

    std::string caption_;
    std::string errorTitle_;
    std::vector<std::unique_ptr<Control>> fixed_;
    std::optional<Progress> progress_;
    bool loaded_ = false;
    bool busy_ = false;
    bool closeRequested_ = false;
};

/// Stands on the stack of a handler while it does work of many steps, which a view shows with a way to cancel.
class LongWork {
public:
    LongWork(Form& form, std::string text, int maximum);
    ~LongWork();
    LongWork(const LongWork&) = delete;
    LongWork& operator=(const LongWork&) = delete;

    /// Says how much of the maximum is done and lets the host's events run once.
    /// @return false when the person wants it cancelled
    bool advance(int value);

private:
    Form& form_;
};

}  // namespace opane::window
