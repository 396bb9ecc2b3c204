#pragma once

/// \file
/// The form of the external-UI extension, which some workstations know instead of
/// `ui:showInterface`: a window that stands by itself, turned by the workstation.

inline constexpr char szExternalUiHost[] = "http://kxstudio.sf.net/ns/lv2ext/external-ui#Host";

/// What the plug-in gives the workstation as its widget.
struct CExternalWidget {
    void (*run)(CExternalWidget*);  ///< turns the window; called regularly while it is shown
    void (*show)(CExternalWidget*);
    void (*hide)(CExternalWidget*);
};

/// What the workstation gives the plug-in.
struct CExternalHost {
    void (*uiClosed)(
        void* controller);  ///< the user closed the window; `run` must not be called again
    char const* szName;     ///< what the window is to be called; may be null
};
