#pragma once

#include <array>

#include "automation/component/method_table.h"

namespace opane::component {

/// The arguments of one late-bound call: takes them from what the caller passed and gives the written ones back.
class CallArguments {
public:
    /// Converts each argument to its parameter's type as the system's variant conversion does, whether it came by
    /// value, by reference or in a variant by reference. Named arguments are matched with their parameters.
    /// @param argumentError  position in the caller's array of the argument that a failure is about; may be null
    /// @throws ComponentError DISP_E_BADPARAMCOUNT, DISP_E_PARAMNOTFOUND (a named argument that the method has not, or
    ///         twice), DISP_E_PARAMNOTOPTIONAL (left out), DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW, E_POINTER
    CallArguments(const Method& method, const DISPPARAMS& passed, LCID lcid, UINT* argumentError);
    CallArguments(const CallArguments&) = delete;
    CallArguments& operator=(const CallArguments&) = delete;

    /// One variant for each parameter, in the order of the parameters.
    VARIANT* values() { return values_.data(); }

    /// Writes the out-arguments into what the caller passed by reference: in the caller's type where it has one, in the
    /// method's own where it is a plain variant. What came by value gets nothing.
    /// @throws ComponentError DISP_E_OVERFLOW or DISP_E_TYPEMISMATCH when the caller's type cannot hold the value; the
    ///         other arguments have got theirs
    void writeBack();

private:
    struct Values : std::array<VARIANT, kMostParameters> {
        ~Values() {
            for (VARIANT& value : *this)
                VariantClear(&value);
        }
    };
    struct Place {
        UINT index = 0;                  // in the caller's array
        VARIANT* variant = nullptr;      // what holds the value, or the reference to it
        bool isVariantOfCaller = false;  // a plain variant that the caller passed by reference
    };

    void match(const DISPPARAMS& passed);
    void take(std::size_t position, VARIANT& passed);
    void giveBack(std::size_t position);
    [[noreturn]] void refuse(std::size_t position, HRESULT code, const std::string& reason) const;

    const Method& method_;
    LCID lcid_;
    UINT* argumentError_;
    std::array<Place, kMostParameters> places_{};
    Values values_{};
};

}  // namespace opane::component
