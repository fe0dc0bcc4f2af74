#pragma once
// Page margins as four numbers: two horizontal (taken from the page width), then two vertical (taken
// from the page height). Which of each pair is left or right, top or bottom, is the caller's
// convention; every user of a margins value must build it in the same order as XQMakeMargins.
namespace qly {

struct XQMargins {
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
    friend bool operator==(const XQMargins&, const XQMargins&) = default;
};

/// The margins (a, b) horizontal and (c, d) vertical, in that order.
constexpr XQMargins XQMakeMargins(double a, double b, double c, double d) { return XQMargins{a, b, c, d}; }

} // namespace qly
