import QtQuick
import Orvane.Windows

/// A catalogue's models as cards.
Column {
    id: list

    required property QtObject catalogue
    /// Those to show, when not all.
    property var model: catalogue
    /// Whether downloading the recommended one is the next thing to do.
    property bool leads: false

    width: parent ? parent.width : 0
    spacing: 8
    Accessible.role: Accessible.List
    Accessible.name: Texts.of("Модели")
    Words {
        width: parent.width
        color: Theme.accent
        wrapMode: Text.Wrap
        visible: text !== ""
        text: list.catalogue.error
    }
    Repeater {
        model: list.model
        delegate: ModelCard {
            width: list.width
            catalogue: list.catalogue
            isNext: list.leads && badge !== ""
            onRemovalAsked: {
                removal.modelId = modelId;
                removal.name = name;
                removal.open();
            }
        }
    }
    Confirm {
        id: removal

        property string modelId
        property string name

        title: Texts.of("Удалить модель «") + name + Texts.of("»?")
        text: Texts.of("Её можно будет скачать снова.")
        yes: Texts.of("Удалить")
        onAccepted: list.catalogue.remove(modelId)
    }
}
