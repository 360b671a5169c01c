// Brings into view what the keyboard reaches in a page that scrolls.
import QtQuick

Item {
    id: follower

    required property Flickable view
    readonly property Item reached: Window.activeFocusItem

    onReachedChanged: {
        let around = reached ? reached.parent : null
        while (around && around !== view.contentItem)
            around = around.parent
        if (!around)
            return
        const room = 8
        const top = reached.mapToItem(view.contentItem, 0, 0).y
        if (top < view.contentY)
            view.contentY = Math.max(view.originY, top - room)
        else if (top + reached.height > view.contentY + view.height)
            view.contentY = Math.min(top + room, top + reached.height + room - view.height)
    }
}
