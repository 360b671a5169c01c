// Pages over one another, kept in step with the screens they show.
import QtQuick
import QtQuick.Controls.Basic
import Varnok

StackView {
    id: stack

    required property Presenter presenter
    required property ContactImport contactImport
    required property AddressBookChoice books
    property list<ScreenAdapter> pages
    // Pages do not slide: they change beside one another.
    property bool still: false

    readonly property int direction: mirrored ? -1 : 1

    function componentOf(screen: ScreenAdapter): Component {
        return screen.name === "VarnokViewController" ? mainPage : tablePage
    }

    function sync() {
        let common = 0
        while (common < depth && common < pages.length && get(common, StackView.ForceLoad).screen === pages[common])
            ++common
        const deeper = pages.length > common
        const move = still || depth === 0 && common === 0 && !deeper ? StackView.Immediate : undefined
        if (common < depth) {
            const way = deeper || still ? StackView.Immediate : StackView.PopTransition
            if (common === 0)
                clear(way)
            else
                pop(get(common - 1, StackView.ForceLoad), way)
        }
        for (let i = common; i < pages.length; ++i) {
            const way = still || i + 1 < pages.length || i === 0 && pages[0].name === "VarnokViewController"
                        ? StackView.Immediate : StackView.PushTransition
            push(componentOf(pages[i]),
                 {"screen": pages[i], "presenter": presenter, "contactImport": contactImport, "books": books}, way)
        }
        if (currentItem)
            currentItem.forceActiveFocus()
    }

    onPagesChanged: sync()

    pushEnter: Transition { NumberAnimation { property: "x"; from: stack.direction * stack.width; to: 0; duration: Theme.slide; easing.type: Easing.OutCubic } }
    pushExit: Transition { NumberAnimation { property: "x"; from: 0; to: -stack.direction * stack.width / 4; duration: Theme.slide; easing.type: Easing.OutCubic } }
    popEnter: Transition { NumberAnimation { property: "x"; from: -stack.direction * stack.width / 4; to: 0; duration: Theme.slide; easing.type: Easing.OutCubic } }
    popExit: Transition { NumberAnimation { property: "x"; from: 0; to: stack.direction * stack.width; duration: Theme.slide; easing.type: Easing.OutCubic } }

    Component {
        id: mainPage
        MainPage {}
    }
    Component {
        id: tablePage
        TablePage {}
    }
}
