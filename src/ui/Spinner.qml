// Something goes on. Stands still where the system wants no motion.
import QtQuick
import Varnok

ProgressRing {
    id: spinner
    implicitWidth: 40
    implicitHeight: 40
    thickness: 4
    value: 0.3
    color: Theme.accent
    trackColor: Theme.separator

    RotationAnimator {
        target: spinner
        from: 0
        to: 360
        duration: 900
        loops: Animation.Infinite
        running: spinner.visible && DesktopSettings.motion
    }
}
