// KEF_EACH(macro, a, b, ...) is macro(a) macro(b) ...
#pragma once

#define KEF_PARENTHESES ()
#define KEF_EXPAND(...) KEF_EXPAND3(KEF_EXPAND3(KEF_EXPAND3(__VA_ARGS__)))
#define KEF_EXPAND3(...) KEF_EXPAND2(KEF_EXPAND2(KEF_EXPAND2(__VA_ARGS__)))
#define KEF_EXPAND2(...) __VA_ARGS__
#define KEF_EACH(macro, ...) __VA_OPT__(KEF_EXPAND(KEF_EACH_(macro, __VA_ARGS__)))
#define KEF_EACH_(macro, first, ...) \
    macro(first) __VA_OPT__(KEF_EACH_AGAIN KEF_PARENTHESES(macro, __VA_ARGS__))
#define KEF_EACH_AGAIN() KEF_EACH_
