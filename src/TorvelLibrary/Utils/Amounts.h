#pragma once

#include "TorvelPlatform/foundation/Locale.h"
#include "TorvelPlatform/foundation/NumberFormatter.h"

#include <string>
#include <string_view>

// Amounts and numbers as screens show them.
//
// The money locale and the settings of currencyFormatter() are shared and stay as the last amount left them,
// deliberately: hosts format further amounts with them. That makes the amounts a matter of the main thread.
// From several threads each amount still comes out whole, in an order that nobody decides.
namespace torvel {

// The locale of money: the current one at first.
Locale defaultLocale();
void setDefaultLocale(const Locale& locale);

// The number formatter of amounts: the currency style, at most two decimals, cut and not rounded.
NumberFormatter& currencyFormatter();
// The number formatter of plain numbers: English, with the grouping separator that is configured when it is
// first used.
NumberFormatter& withSeparator();

// An amount in plain decimal notation ("1234.5") as the money locale writes it, without the currency symbol
// and the white space around it; the empty text for what is no number. With decimals there are two, else
// none for a whole amount.
//
// The money locale becomes the current locale for an empty currency. For another symbol than its own it
// becomes the first locale with that symbol (with the one that the facade's currencyMap gives for it); it
// stays what it is when there is none.
std::string getDisplayAmountWithoutCurrency(std::string_view amount, const std::string& currency,
                                            bool withDecimals);

// The amount with the currency before or behind it, as the configuration says, and the separator between
// them. On a screen that is written from right to left the order is mirrored, deliberately, so that the
// currency stands on the configured side. Forced, a currency that would stand behind stands before, with one
// space instead of the separator. An amount that is no number leaves its place empty.
std::string getDisplayAmount(std::string_view amount, bool isForceLTRCurrency,
                             std::string_view currencyAmountSeparator, const std::string& currency,
                             bool withDecimals);

// The number as withSeparator() writes it.
std::string formattedWithSeparator(double number);

// A whole number without decimals ("5"), any other in its shortest form ("5.25").
std::string zeroFormattedValue(float number);

}  // namespace torvel
