#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "colours/ComponentCode.h"

#ifdef __OBJC__
@class NSColor;
#else
struct NSColor;
#endif

class CParameterBlock;

/// \file
/// The colour scheme: which colour or gradient every component is drawn in.
///
/// Channels are red, green, blue and alpha, nominally 0 to 1; nothing is refused or cut outside of
/// that. Loading takes its data as untrusted and never throws because of it. Nothing here takes a
/// lock: a scheme may be read from any thread, and must not change while another thread reads it.

/// A category that travels with a colour and that nothing here acts on. The palettes use 1 for
/// areas, 2 for audio and tracks, 3 for point editing, 4 for controls, 5 for track groups.
using ColourClass = int;

/// Whether two numbers are at most `tolerance` apart. A NaN is never within anything.
bool WithinCG(double a, double b, double tolerance);

/// A component's plain colour, kept in both forms that drawing code needs.
class CComponentColour {
public:
    /// \name Names in a saved scheme
    /// @{
    static constexpr const char* szType = "Type";       ///< 1 for a plain colour, 2 for a gradient.
    static constexpr const char* szClass = "Cl";        ///< The class.
    static constexpr const char* szRed = "R";           ///< Red.
    static constexpr const char* szGreen = "G";         ///< Green.
    static constexpr const char* szBlue = "B";          ///< Blue.
    static constexpr const char* szAlpha = "A";         ///< Alpha.
    static constexpr const char* szComponent = "Comp";  ///< The block of one colour.
    static constexpr const char* szComponents = "Comps";    ///< The block of a scheme.
    static constexpr const char* szName = "Name";           ///< The name.
    static constexpr const char* szComponentColour = "CC";  ///< Not written by anything.
    /// @}

    double m_rgba[4] = {};           ///< Red, green, blue, alpha.
    CGColorRef m_cgColor = nullptr;  ///< Owned; may be null.
    NSColor* m_nsColor = nullptr;    ///< Owned; may be nil.
    CComponentCode m_code;           ///< The component that it is the colour of.
    ColourClass m_nClass;            ///< Kept and saved; nothing acts on it.
    std::string m_name;              ///< What a colour editor shows.

    /// No colour and no name yet: for objects that a Load fills next.
    CComponentColour(CComponentCode code, ColourClass cls);

    /// A whole colour, in the colour space `space`. A null name is an empty one.
    CComponentColour(CComponentCode code, ColourClass cls, const char* name, double r, double g,
                     double b, double a, CGColorSpace* space);

    CComponentColour(CComponentColour const&) = delete;

    /// Releases both forms of the colour.
    virtual ~CComponentColour();

    /// Appends "Type" 1, "Code", "Cl", "R", "G", "B", "A" and "Name" to `block`.
    virtual void Save(CParameterBlock* block) const;

    /// Reads what Save wrote; the class may be missing. A missing channel becomes 0 and a missing
    /// name empty. True when nothing was missing; otherwise the colour has no CGColorRef.
    virtual bool Load(CParameterBlock* block, CGColorSpace* space);

    /// Copies everything. The colour is made anew in the device's colour space.
    virtual CComponentColour& operator=(CComponentColour& other);

    /// NotEqual.
    virtual bool operator!=(CComponentColour const& other) const;

    /// Whether a channel differs by more than 1/256, or is NaN. Code, class and name do not count.
    bool NotEqual(CComponentColour const& other) const;

    /// Sets the colour, in the device's colour space.
    void UpdateColour(double r, double g, double b, double a);

    /// Does nothing.
    void CopyColourArray() {}

private:
    void MakeColours(CGColorSpace* space);
};

/// One colour of a gradient. Its code, class and name mean nothing.
class CGradComponent : public CComponentColour {
public:
    float m_fPosition;  ///< Where along the gradient, nominally 0 to 1.

    /// No colour yet.
    CGradComponent(float position, CComponentCode code);

    /// A whole stop, in the colour space `space`.
    CGradComponent(double position, double r, double g, double b, double a, CGColorSpace* space);

    /// Appends "Position" and the block "Color" to `block`.
    void Save(CParameterBlock* block) const override;

    /// Reads what Save wrote. False without touching the colour when either is missing.
    bool Load(CParameterBlock* block, CGColorSpace* space) override;

    using CComponentColour::operator=;
    using CComponentColour::operator!=;

    /// Copies the position and the colour.
    CGradComponent& operator=(CGradComponent& other);

    /// Whether positions or colours differ.
    bool operator!=(CGradComponent const& other) const;
};

/// Orders the stops of a gradient. Two stops at one position are the same element.
struct CCompareGradPositions {
    /// Whether `a` stands before `b`.
    bool operator()(CGradComponent const* a, CGradComponent const* b) const {
        return a->m_fPosition < b->m_fPosition;
    }
};

/// A component's gradient. What it inherits as a plain colour stays zero.
class CGradientFill : public CComponentColour {
public:
    std::set<CGradComponent*, CCompareGradPositions> m_components;  ///< The stops, owned.
    CGGradientRef m_gradient = nullptr;  ///< What is drawn, owned; null until Create.

    /// No stops and an empty name yet: for objects that a Load fills next.
    CGradientFill(CComponentCode code, ColourClass cls);

    /// No stops yet. A null name is an empty one.
    CGradientFill(CComponentCode code, ColourClass cls, const char* name);

    /// Clear.
    ~CGradientFill() override;

    /// Adds a stop. Red, green and blue are multiplied by `factor`, then all four are cut at 1.0. A
    /// stop that is already at this position stays, and the new one is dropped.
    void AddColor(double position, double r, double g, double b, double a, CGColorSpace* space,
                  double factor);

    /// Deletes a stop of this gradient; any other pointer is ignored.
    void DeleteColor(CGradComponent* stop);

    /// Makes `m_gradient` from the stops. To be called after they change: nothing else but Load
    /// does.
    void Create(CGColorSpace* space);

    /// Deletes the stops and what is drawn.
    void Clear();

    /// Appends "Type" 2, "Code", "Cl", "Name" and one block "GradColor" per stop to `block`.
    void Save(CParameterBlock* block) const override;

    /// Reads what Save wrote, dropping stops that cannot be read, and calls Create. False when the
    /// code, the name or something of the last stop was missing.
    bool Load(CParameterBlock* block, CGColorSpace* space) override;

    using CComponentColour::operator=;

    /// Copies name, code, class and stops; what is drawn has to be made with Create.
    CGradientFill& operator=(CGradientFill& other);

    /// Whether the stops differ in number, position or colour. A plain colour never differs from a
    /// gradient.
    bool operator!=(CComponentColour const& other) const override;

    /// Prints source lines that would make this gradient to standard error.
    void DumpCode() const;
};

/// A scheme: at most one colour or gradient for every component code. It owns them.
class CComponentsColors {
public:
    /// A scheme without colours.
    constexpr CComponentsColors() noexcept = default;
    CComponentsColors(CComponentsColors const&) = delete;
    CComponentsColors& operator=(CComponentsColors const&) = delete;

    /// Deletes all colours.
    ~CComponentsColors();

    /// The colour of a code, valid until it is replaced or cleared. Null for (0, 0) and for codes
    /// that have none.
    CComponentColour* Find(CComponentCode code) const;

    /// Whether Find answers a CGradientFill.
    bool IsGradient(CComponentCode code) const;

    /// \name Parts of a colour
    /// Null when the code has none; (0, 0) is a code like any other here. A gradient has neither of
    /// the first two, and four zeros.
    /// @{

    /// The plain colour in Core Graphics' form, still owned by the scheme.
    CGColorRef FindCGColorRef(CComponentCode code) const;

    /// The plain colour in AppKit's form, still owned by the scheme.
    NSColor* FindNSColor(CComponentCode code) const;

    /// Red, green, blue and alpha, still owned by the scheme.
    double* FindRGBA(CComponentCode code) const;
    /// @}

    /// Sets the colour of a code that is present.
    void UpdateColour(CComponentCode code, float r, float g, float b, float a);

    /// Takes over a colour, in place of the one that its code has so far, which is deleted.
    void Add(CComponentColour* colour);

    /// Deletes all colours.
    void Clear();

    /// Appends a block "Comps" to `block`, with one block "Comp" for each colour, from the greatest
    /// packed code to the least.
    void Save(CParameterBlock* block) const;

    /// Lays the colours of a saved scheme over those that are here. Entries that cannot be read,
    /// and those of an unknown type, are passed over. False when there is no block "Comps", or
    /// when the last entry of a known type could not be read.
    bool Load(CParameterBlock* block, CGColorSpace* space);

    /// One colour and the packed code that it is found by.
    struct Entry {
        long long lCode;                            ///< The packed code.
        std::unique_ptr<CComponentColour> pColour;  ///< Never null.
    };

    /// All colours, from the greatest packed code to the least; valid until the scheme changes.
    std::vector<Entry> const& Entries() const { return m_entries; }

    /// Has an action called after every change that goes by way of the scheme; null ends that.
    void WhenChanged(void (*action)()) { m_pChanged = action; }

private:
    CComponentColour* FindPacked(CComponentCode code) const;
    void Merge(std::vector<Entry> entries);
    void Changed() const;

    std::vector<Entry> m_entries;
    void (*m_pChanged)() = nullptr;
};

/// The scheme that everything in the process is drawn in; empty at first.
extern CComponentsColors gAppColours;
