// The one place for colours, sizes, type and motion.
pragma Singleton
import QtQuick
import Varnok

QtObject {
    readonly property bool dark: DesktopSettings.dark

    // Surfaces.
    readonly property color window: dark ? "#171b1b" : "#f2f4f3"
    readonly property color card: dark ? "#232929" : "#ffffff"
    readonly property color raised: dark ? "#2c3333" : "#ffffff"
    readonly property color pressed: dark ? "#333b3b" : "#e8eceb"
    readonly property color hovered: dark ? "#2a3131" : "#f5f7f6"
    readonly property color separator: dark ? "#343c3c" : "#e3e7e6"
    readonly property color edge: dark ? "#00000000" : "#dfe4e2"
    readonly property color dim: dark ? "#8c000000" : "#73101615"

    // Texts, at least 4.5 to 1 on window, card and raised.
    readonly property color text: dark ? "#f1f4f3" : "#171d1c"
    readonly property color secondary: dark ? "#a9b5b2" : "#56625f"
    readonly property color accent: dark ? "#62d2c0" : "#0b6b60"
    readonly property color destructive: dark ? "#ff938c" : "#b3202a"

    // Fills with a text on them.
    readonly property color fill: dark ? "#12796d" : "#0c7468"
    readonly property color fillPressed: dark ? "#0e6258" : "#095a51"
    readonly property color destructiveFill: dark ? "#b5323a" : "#b8252f"
    readonly property color destructiveFillPressed: dark ? "#94272e" : "#941b24"
    readonly property color fillText: "#ffffff"
    readonly property color tonal: dark ? "#22403c" : "#d9ece8"
    readonly property color tonalPressed: dark ? "#2b504b" : "#c3e0da"
    readonly property color destructiveTonal: dark ? "#47292b" : "#f9e0e0"
    readonly property color destructiveTonalPressed: dark ? "#593234" : "#f2cbcb"
    readonly property color track: dark ? "#414a4a" : "#c4cccA"
    readonly property color knob: "#ffffff"
    readonly property color focus: dark ? "#8be0d2" : "#0c7468"

    // Sizes. Those of text follow the user's scale, those of fingers do not.
    readonly property int target: 48
    readonly property int margin: 16
    readonly property int gap: 8
    readonly property int radius: 12
    readonly property int buttonRadius: 24
    readonly property int columnWidth: 640
    readonly property int sheetWidth: 440
    readonly property int wideFrom: 840
    readonly property int barHeight: 56
    readonly property int icon: 24

    // Type.
    readonly property real scale: DesktopSettings.textScale
    readonly property int caption: Math.round(13 * scale)
    readonly property int body: Math.round(16 * scale)
    readonly property int heading: Math.round(18 * scale)
    readonly property int title: Math.round(24 * scale)
    readonly property int display: Math.round(34 * scale)

    // Milliseconds.
    readonly property int quick: DesktopSettings.motion ? 120 : 0
    readonly property int slide: DesktopSettings.motion ? 180 : 0
}
