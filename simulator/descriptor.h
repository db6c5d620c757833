#pragma once

namespace opane::simulator {

/// A file descriptor and its end.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();
    int number() const { return number_; }

private:
    int number_;
};

}  // namespace opane::simulator
