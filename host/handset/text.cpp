// Text in the handset's 8-bit code page, GBK, and formatted wide text. One character is converted at a time, because
// what a full buffer must not split, and what has no counterpart, are single characters.
#include "host/handset/text.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <string>

#include "gbk_table.h"
#include "host/handset/faults.h"

namespace handset {
namespace {

constexpr auto kUnconvertible = std::numeric_limits<std::size_t>::max();

std::string printed;

bool IsAscii(unsigned unit) {
  return unit < 0x80;
}

using GbkCodes = std::array<std::uint16_t, 0x10000>;

// The two bytes of each character, the first of them the high one; 0 for a character that the code page lacks.
GbkCodes InvertTable() {
  GbkCodes codes = {};
  for (unsigned code = 0x8000; code <= 0xFFFF; ++code) {
    codes[kGbkTable[(code >> 8) - 0x80][code & 0xFF]] = static_cast<std::uint16_t>(code);
  }
  codes[0] = 0;
  return codes;
}

// One character's bytes; returns how many, 0 for a character that the code page lacks.
std::size_t ToGbk(char16_t unit, char (&bytes)[2]) {
  static const GbkCodes codes = InvertTable();
  if (IsAscii(unit)) {
    bytes[0] = static_cast<char>(unit);
    return 1;
  }
  bytes[0] = static_cast<char>(codes[unit] >> 8);
  bytes[1] = static_cast<char>(codes[unit]);
  return codes[unit] != 0 ? 2 : 0;
}

// The character that `bytes` starts with; returns its bytes, 0 when there is none, and then leaves `unit` alone.
std::size_t FromGbk(const char* bytes, char16_t& unit) {
  const auto first = static_cast<unsigned char>(bytes[0]);
  const bool is_ascii = IsAscii(first);
  const char16_t character = is_ascii ? first : kGbkTable[first - 0x80][static_cast<unsigned char>(bytes[1])];
  if (!is_ascii && character == u'\0') return 0;
  unit = character;
  return is_ascii ? 1 : 2;
}

// Neither direction reads on when there is no room left: the text need not end there.
std::size_t WideToGbk(char* bytes, const char16_t* text, std::size_t size) {
  std::size_t length = 0;
  for (; length < size && *text != u'\0'; ++text) {
    char character[2];
    const std::size_t count = ToGbk(*text, character);
    if (count == 0) return kUnconvertible;
    if (count > size - length) return length;
    for (std::size_t i = 0; i < count; ++i) bytes[length++] = character[i];
  }
  if (length < size) bytes[length] = '\0';
  return length;
}

std::size_t GbkToWide(char16_t* text, const char* bytes, std::size_t size) {
  std::size_t length = 0;
  for (; length < size && *bytes != '\0'; ++length) {
    const std::size_t count = FromGbk(bytes, text[length]);
    if (count == 0) return kUnconvertible;
    bytes += count;
  }
  if (length < size) text[length] = u'\0';
  return length;
}

// One conversion of a format: "%-08.4d" is flags "-0", width 8, precision 4, kind 'd'.
struct Conversion {
  std::string flags;
  int width = 0;
  int precision = -1;
  char kind = '\0';
};

int ReadNumber(const char16_t*& format) {
  int number = 0;
  for (; *format >= u'0' && *format <= u'9'; ++format) number = number * 10 + (*format - u'0');
  return number;
}

// Reads what follows a "%".
Conversion ReadConversion(const char16_t*& format) {
  Conversion conversion;
  while (*format != u'\0' && std::u16string_view(u"-+ #0").find(*format) != std::u16string_view::npos) {
    conversion.flags += static_cast<char>(*format++);
  }
  conversion.width = ReadNumber(format);
  if (*format == u'.') conversion.precision = ReadNumber(++format);
  if (*format == u'l') ++format;  // int and long are the same here.
  conversion.kind = IsAscii(*format) ? static_cast<char>(*format) : '?';
  if (*format != u'\0') ++format;
  return conversion;
}

std::u16string FormatNumber(const Conversion& conversion, unsigned value) {
  const std::string format = "%" + conversion.flags + "*.*" + conversion.kind;
  const auto print = [&](char* out, std::size_t size) {
    return std::snprintf(out, size, format.c_str(), conversion.width, conversion.precision, value);
  };
  std::string digits(static_cast<std::size_t>(print(nullptr, 0)), '\0');
  print(digits.data(), digits.size() + 1);
  return {digits.begin(), digits.end()};
}

std::u16string FormatText(const Conversion& conversion, std::u16string_view text) {
  if (conversion.precision >= 0) text = text.substr(0, static_cast<std::size_t>(conversion.precision));
  const auto width = static_cast<std::size_t>(conversion.width);
  const std::u16string padding(width > text.size() ? width - text.size() : 0, u' ');
  const bool left = conversion.flags.find('-') != std::string::npos;
  return left ? std::u16string(text) + padding : padding + std::u16string(text);
}

// A pointer, so that the arguments taken here are taken for the caller too.
std::u16string FormatArgument(const Conversion& conversion, std::va_list* arguments) {
  switch (conversion.kind) {
    case '%': return u"%";
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X': return FormatNumber(conversion, va_arg(*arguments, unsigned));
    case 'c': {
      const auto unit = static_cast<char16_t>(va_arg(*arguments, int));
      return FormatText(conversion, {&unit, 1});
    }
    case 's': {
      const auto* text = va_arg(*arguments, const char16_t*);
      return FormatText(conversion, text == nullptr ? u"(null)" : text);
    }
    default: Die(std::string("_snwprintf has no conversion ") + conversion.kind);
  }
}

std::u16string Format(const char16_t* format, std::va_list* arguments) {
  std::u16string out;
  while (*format != u'\0') {
    if (*format == u'%') {
      const Conversion conversion = ReadConversion(++format);
      out += FormatArgument(conversion, arguments);
    } else {
      out += *format++;
    }
  }
  return out;
}

int StoreFormatted(char16_t* buffer, std::size_t size, std::u16string_view text) {
  text.copy(buffer, size);
  if (text.size() < size) buffer[text.size()] = u'\0';
  return text.size() <= size ? static_cast<int>(text.size()) : -1;
}

}  // namespace

const std::string& PrintedText() {
  return printed;
}

void ResetPrintedText() {
  printed.clear();
}

}  // namespace handset

namespace coredll {

using namespace handset;

std::size_t wcstombs(char* bytes, const char16_t* text, std::size_t size) {
  return PlatformCall({"wcstombs", {}, size}, kUnconvertible, [&] { return WideToGbk(bytes, text, size); });
}

std::size_t mbstowcs(char16_t* text, const char* bytes, std::size_t size) {
  return PlatformCall({"mbstowcs", {}, size}, kUnconvertible, [&] { return GbkToWide(text, bytes, size); });
}

int printf(const char* format, ...) {
  Watch({"printf", {}, 0});
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(static_cast<std::size_t>(length), '\0');
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  va_end(arguments);
  printed += text;
  return length;
}

int _snwprintf(char16_t* buffer, std::size_t size, const char16_t* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int length =
      PlatformCall({"_snwprintf", {}, 0}, -1, [&] { return StoreFormatted(buffer, size, Format(format, &arguments)); });
  va_end(arguments);
  return length;
}

}  // namespace coredll
