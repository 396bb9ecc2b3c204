#pragma once

/// What "Type" says in a saved scheme. Internal to the colour scheme.
inline constexpr int kPlainType = 1;
inline constexpr int kGradientType = 2;
