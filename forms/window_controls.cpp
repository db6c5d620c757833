#include "forms/window_controls.h"

#include <algorithm>
#include <new>

#include "platform/dialogs.h"
#include "platform/message_pump.h"
#include "shared/runtime_error.h"

namespace opane::window {
namespace {

void requireIndex(int index, std::size_t count, const std::string& name) {
    if (index < 0 || static_cast<std::size_t>(index) >= count)
        throw RuntimeError(ErrorNumber::subscript, name + " has no entry " + std::to_string(index) + "; it has " +
                                                       std::to_string(count) + " from 0");
}

/// The text with every line break as carriage return and line feed, or with none.
std::string withLineBreaks(const std::string& text, bool multiLine) {
    std::string result;
    for (const char character : text) {
        if (character == '\n' && multiLine)
            result += "\r\n";
        else if (character != '\n' && character != '\r')
            result += character;
    }
    return result;
}

std::string numbered(ErrorNumber number, const char* text) {
    return std::string("Error ").append(std::to_string(static_cast<int>(number))).append(": ").append(text);
}

Control* findIn(const Container& container, std::string_view name) {
    for (Control* const control : container.controls()) {
        if (control->name() == name)
            return control;
        if (const auto* const inner = dynamic_cast<const Container*>(control)) {
            if (Control* const found = findIn(*inner, name))
                return found;
        }
    }
    return nullptr;
}

}  // namespace

Control::Control(Container& container, std::string name, Place place)
    : container_(container), name_(std::move(name)), place_(place) {
    container.controls_.push_back(this);
}

bool Control::takesInput(Change whatItShows) const {
    bool takes = owner().loaded() && !owner().busy();
    for (const Control* control = this; control != nullptr; control = control->container_.asControl())
        takes = takes && control->enabled_ && control->visible_;
    if (!takes)
        changed(whatItShows);
    return takes;
}

void TextBox::userTypes(const std::string& value) {
    if (style_.readOnly || !takesInput(Change::text))
        return;
    text(withLineBreaks(value, multiLine()));
}

void ComboBox::entry(std::size_t index, const std::string& value) {
    if (index == entries_.size()) {
        entries_.push_back(value);
        changed(Change::entries);
        return;
    }
    requireIndex(static_cast<int>(index), entries_.size(), name());
    set(entries_[index], value, Change::entries);
}

void ComboBox::select(int index) {
    requireIndex(index, entries_.size(), name());
    if (index == selected_)
        return;
    set(selected_, index, Change::selection);
    owner().run(onClick);
}

std::string ComboBox::text() const {
    return selected_ == kNone ? std::string() : entries_[static_cast<std::size_t>(selected_)];
}

void ComboBox::text(const std::string& value) {
    const auto found = std::find(entries_.begin(), entries_.end(), value);
    set(selected_, found == entries_.end() ? kNone : static_cast<int>(found - entries_.begin()), Change::selection);
}

void ComboBox::userSelects(int index) {
    if (takesInput(Change::selection))
        select(index);
}

OptionButton::OptionButton(Container& container, OptionGroup& group, int index, std::string name, std::string caption,
                           Place place)
    : Captioned(container, std::move(name), std::move(caption), place), group_(group), index_(index) {}

bool OptionButton::selected() const {
    return group_.selected() == index_;
}

void OptionButton::click() {
    if (takesInput(Change::selection))
        return group_.select(index_);
    for (const OptionButton& other : group_.buttons_)
        other.changed(Change::selection);  // a view's widgets may have let go of the selected one
}

OptionGroup::OptionGroup(Container& container, const std::string& name, const std::vector<std::string>& captions,
                         Place first, int selected)
    : form_(container.form()), selected_(selected) {
    for (const std::string& caption : captions) {
        const int index = static_cast<int>(buttons_.size());
        buttons_.emplace_back(container, *this, index, name + "(" + std::to_string(index) + ")", caption, first);
        ++first.row;
    }
}

void OptionGroup::select(int index) {
    requireIndex(index, buttons_.size(), "the group of options");
    if (index == selected_)
        return;
    const int before = selected_;
    selected_ = index;
    if (before != kNone)
        (*this)[before].changed(Change::selection);
    (*this)[index].changed(Change::selection);
    form_.run(onClick);
}

void CommandButton::click() {
    if (takesInput(Change::enabled))
        owner().run(onClick);
}

void TabControl::select(int index) {
    requireIndex(index, controls().size(), name());
    set(selected_, index, Change::selection);
}

void TabControl::userSelects(int index) {
    if (takesInput(Change::selection))
        select(index);
}

TabPage::TabPage(TabControl& tabs, std::string name, std::string caption)
    : Captioned(tabs, std::move(name), std::move(caption), Place{0, static_cast<int>(tabs.controls().size())}),
      Container(tabs.form()) {}

Form::Form(std::string caption, std::string errorTitle)
    : Container(*this), caption_(std::move(caption)), errorTitle_(std::move(errorTitle)) {}

void Form::load() {
    loaded_ = true;
    run([this] { Form_Load(); });
}

void Form::userCloses() {
    if (!loaded_)
        return;
    closeRequested_ = true;
    if (!busy_)
        unload();
}

void Form::unload() {
    busy_ = true;
    runGuarded([this] { Form_Unload(); });
    busy_ = false;
    loaded_ = false;
    changed(Change::closed);
}

void Form::run(const std::function<void()>& handler) {
    if (!handler)
        return;
    if (busy_) {
        handler();
        return;
    }
    busy_ = true;
    changed(Change::busy);
    runGuarded(handler);
    busy_ = false;
    changed(Change::busy);
    if (closeRequested_)
        unload();
}

void Form::runGuarded(const std::function<void()>& handler) {
    try {
        handler();
        return;
    } catch (const RuntimeError& error) {
        showError(numbered(error.number(), error.what()));
    } catch (const std::bad_alloc&) {
        showError(numbered(ErrorNumber::outOfMemory, "out of memory"));
    } catch (const std::exception& error) {
        showError(std::string("Error without a number: ").append(error.what()));
    } catch (...) {
        showError("Error without a number or a text");
    }
    try {
        afterError();
    } catch (const std::exception&) {
        // The error that brought it here has been shown.
    }
}

void Form::showError(const std::string& text) const {
    showMessageBox(text, errorTitle_, MessageBoxButtons::ok);
}

Control* Form::find(std::string_view name) const {
    return findIn(*this, name);
}

void Form::userCancels() {
    if (!progress_)
        return;
    progress_->cancelRequested = true;
    changed(Change::progress);
}

void Form::label(Container& container, std::string name, std::string caption, Place place) {
    fixed_.push_back(std::make_unique<Label>(container, std::move(name), std::move(caption), place));
}

void Form::line(Container& container, std::string name, Place place) {
    fixed_.push_back(std::make_unique<Line>(container, std::move(name), place));
}

LongWork::LongWork(Form& form, std::string text, int maximum) : form_(form) {
    form_.progress_ = Progress{std::move(text), 0, maximum, false};
    form_.changed(Change::progress);
}

LongWork::~LongWork() {
    form_.progress_.reset();
    form_.changed(Change::progress);
}

bool LongWork::advance(int value) {
    form_.progress_->value = value;
    form_.changed(Change::progress);
    yieldToHost();
    return !form_.progress_->cancelRequested;
}

}  // namespace opane::window
