// SPDX-License-Identifier: GPL-3.0-or-later
#include "actioneditor.h"

#include "editortexts.h"
#include "keymap/keyactiontext.h"
#include "keymap/keymap.h"
#include "keymap/keymaptexts.h"
#include "keymap/keytable.h"
#include "movementarrow.h"
#include "windowfit.h"

#include <QAbstractItemView>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// Where each movement sits in the 3 x 3 compass (row, column).
struct CompassCell
{
    int MouseAction;
    int Row;
    int Column;
};
constexpr std::array<CompassCell, 8> Compass = {{
    {MouseActions::MoveUpLeft, 0, 0},
    {MouseActions::MoveUp, 0, 1},
    {MouseActions::MoveUpRight, 0, 2},
    {MouseActions::MoveLeft, 1, 0},
    {MouseActions::MoveRight, 1, 2},
    {MouseActions::MoveDownLeft, 2, 0},
    {MouseActions::MoveDown, 2, 1},
    {MouseActions::MoveDownRight, 2, 2},
}};

// The modifier boxes in their order: left Shift, Ctrl, Alt, Windows, then the
// right ones.
constexpr std::array<std::int16_t ModifierFlags::*, ActionEditor::ModifierBoxCount> ModifierBoxFlags = {
    &ModifierFlags::LeftShift,  &ModifierFlags::LeftCtrl,  &ModifierFlags::LeftAlt,  &ModifierFlags::LeftWin,
    &ModifierFlags::RightShift, &ModifierFlags::RightCtrl, &ModifierFlags::RightAlt, &ModifierFlags::RightWin,
};

// The names of the movement arrows for screen readers, by mouse action 2..9.
constexpr std::array<EditorText, 8> MovementNames = {
    EditorText::NameMoveLeft,  EditorText::NameMoveUpLeft,    EditorText::NameMoveUp,   EditorText::NameMoveUpRight,
    EditorText::NameMoveRight, EditorText::NameMoveDownRight, EditorText::NameMoveDown, EditorText::NameMoveDownLeft,
};

constexpr int ArrowButtonExtent = 34;
constexpr int MovementPictureExtent = 40;

} // namespace

ActionEditor::ActionEditor(QWidget *parent) : QGroupBox(parent)
{
    m_deviceLabel = new QLabel(this);
    m_device = new QComboBox(this);
    m_device->addItems({QString(), QString()});
    m_deviceLabel->setBuddy(m_device);
    connect(m_device, &QComboBox::activated, this, [this](int index) {
        m_action.IsMouse = index == 1;
        ShowMousePanel(m_action.IsMouse);
        emit ActionEdited(m_action);
    });

    // Keyboard panel.
    m_keyboardPanel = new QWidget(this);
    auto *modifierGrid = new QGridLayout;
    m_leftLabel = new QLabel(m_keyboardPanel);
    m_rightLabel = new QLabel(m_keyboardPanel);
    for (QLabel *label : {m_leftLabel, m_rightLabel})
        label->setAlignment(Qt::AlignHCenter);
    modifierGrid->addWidget(m_leftLabel, 0, 1);
    modifierGrid->addWidget(m_rightLabel, 0, 2);
    for (int row = 0; row < 4; ++row) {
        m_rowLabels[static_cast<std::size_t>(row)] = new QLabel(m_keyboardPanel);
        modifierGrid->addWidget(m_rowLabels[static_cast<std::size_t>(row)], row + 1, 0);
        for (int side = 0; side < 2; ++side) {
            auto *box = new QCheckBox(m_keyboardPanel);
            m_modifiers[static_cast<std::size_t>(side * 4 + row)] = box;
            modifierGrid->addWidget(box, row + 1, side + 1, Qt::AlignHCenter);
            connect(box, &QCheckBox::clicked, this,
                    [this, index = side * 4 + row](bool checked) { ModifierBoxClicked(index, checked); });
        }
        // A row's access key reaches its left box, a column's its top one.
        m_rowLabels[static_cast<std::size_t>(row)]->setBuddy(m_modifiers[static_cast<std::size_t>(row)]);
    }
    m_leftLabel->setBuddy(m_modifiers[0]);
    m_rightLabel->setBuddy(m_modifiers[4]);
    modifierGrid->setColumnStretch(3, 1);

    m_specialFrame = new QGroupBox(m_keyboardPanel);
    m_specialKeys = new QComboBox(m_specialFrame);
    m_specialKeys->setEditable(true);
    m_specialKeys->setInsertPolicy(QComboBox::NoInsert);
    m_specialKeys->setMinimumContentsLength(12);
    auto *specialLayout = new QVBoxLayout(m_specialFrame);
    specialLayout->addWidget(m_specialKeys);
    connect(m_specialKeys, &QComboBox::currentTextChanged, this, &ActionEditor::SpecialKeyChosen);

    m_snapshot = new QPushButton(m_keyboardPanel);
    m_snapshot->setAutoDefault(false);

    auto *keyboardLayout = new QVBoxLayout(m_keyboardPanel);
    keyboardLayout->setContentsMargins(0, 0, 0, 0);
    keyboardLayout->addLayout(modifierGrid);
    keyboardLayout->addWidget(m_specialFrame);
    keyboardLayout->addWidget(m_snapshot, 0, Qt::AlignLeft);
    keyboardLayout->addStretch(1);

    // Mouse panel.
    m_mousePanel = new QWidget(this);
    m_mouseOptions = new QButtonGroup(this);
    m_mouseOptions->setExclusive(true);
    auto *clickLeft = new QRadioButton(m_mousePanel);
    auto *clickRight = new QRadioButton(m_mousePanel);
    m_mouseOptions->addButton(clickLeft, MouseActions::ButtonLeft);
    m_mouseOptions->addButton(clickRight, MouseActions::ButtonRight);
    m_movementLabel = new QLabel(m_mousePanel);
    auto *compass = new QGridLayout;
    compass->setSpacing(2);
    for (const CompassCell &cell : Compass) {
        auto *arrow = new QToolButton(m_mousePanel);
        arrow->setCheckable(true);
        arrow->setAutoRaise(true);
        arrow->setFixedSize(ArrowButtonExtent, ArrowButtonExtent);
        arrow->setIconSize(QSize(ArrowButtonExtent - 10, ArrowButtonExtent - 10));
        m_mouseOptions->addButton(arrow, cell.MouseAction);
        compass->addWidget(arrow, cell.Row, cell.Column);
    }
    m_movementPicture = new QLabel(m_mousePanel);
    m_movementPicture->setFixedSize(ArrowButtonExtent, ArrowButtonExtent);
    m_movementPicture->setAlignment(Qt::AlignCenter);
    compass->addWidget(m_movementPicture, 1, 1);
    m_movementLabel->setBuddy(m_mouseOptions->button(Compass[0].MouseAction));
    connect(m_mouseOptions, &QButtonGroup::idClicked, this, [this](int mouseAction) {
        m_action.MouseAction = mouseAction;
        ShowMovementPicture(mouseAction);
        emit ActionEdited(m_action);
    });

    auto *mouseLayout = new QVBoxLayout(m_mousePanel);
    mouseLayout->setContentsMargins(0, 0, 0, 0);
    mouseLayout->addWidget(clickLeft);
    mouseLayout->addWidget(clickRight);
    mouseLayout->addSpacing(6);
    mouseLayout->addWidget(m_movementLabel);
    auto *compassRow = new QHBoxLayout;
    compassRow->addLayout(compass);
    compassRow->addStretch(1);
    mouseLayout->addLayout(compassRow);
    mouseLayout->addStretch(1);

    m_panels = new QStackedWidget(this);
    m_panels->addWidget(m_keyboardPanel);
    m_panels->addWidget(m_mousePanel);

    m_commentLabel = new QLabel(this);
    m_comment = new QLineEdit(this);
    m_commentLabel->setBuddy(m_comment);
    // Undo and Redo in the comment box are the document's, as everywhere else:
    // the box's own history would be a second one that forgets on every key.
    m_comment->installEventFilter(this);
    connect(m_comment, &QLineEdit::textEdited, this, [this](const QString &text) {
        m_action.Comment = text;
        emit ActionEdited(m_action);
    });

    m_message = new QLabel(this);
    m_message->setWordWrap(true);
    m_message->setMinimumHeight(m_message->fontMetrics().height() * 2);
    m_message->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    auto *deviceRow = new QHBoxLayout;
    deviceRow->addWidget(m_deviceLabel);
    deviceRow->addWidget(m_device, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(deviceRow);
    layout->addWidget(m_panels);
    layout->addWidget(m_commentLabel);
    layout->addWidget(m_comment);
    layout->addWidget(m_message);

    ApplyLanguage();
    UpdateArrowIcons();
    ShowMovementPicture(-1);
}

QAbstractButton *ActionEditor::MouseOption(int index) const
{
    return m_mouseOptions->button(index);
}

void ActionEditor::ShowAction(const KeyAction &action)
{
    m_action = action;
    SetMessage(QString(), false);
    if (QAbstractButton *option = MouseOption(action.MouseAction))
        option->setChecked(true);
    ShowMovementPicture(action.MouseAction);
    m_device->setCurrentIndex(action.IsMouse ? 1 : 0);
    ShowMousePanel(action.IsMouse);
    {
        // The list reports every change of its text, and this one is no edit.
        const QSignalBlocker blocker(m_specialKeys);
        m_specialKeys->setCurrentText(KeyDisplayName(action.KeyCode));
    }
    m_comment->setText(action.Comment);
    int modifiers = action.Modifiers;
    const ModifierFlags flags = ModifierToFlags(modifiers);
    for (int i = 0; i < ModifierBoxCount; ++i)
        ModifierBox(i)->setChecked(flags.*ModifierBoxFlags[static_cast<std::size_t>(i)] != 0);
}

void ActionEditor::ModifierBoxClicked(int index, bool checked)
{
    int modifiers = m_action.Modifiers;
    ModifierFlags flags = ModifierToFlags(modifiers);
    flags.*ModifierBoxFlags[static_cast<std::size_t>(index)] = checked ? 1 : 0;
    m_action.Modifiers = static_cast<std::int16_t>(FlagsToModifier(flags));
    emit ActionEdited(m_action);
}

void ActionEditor::SpecialKeyChosen(const QString &text)
{
    m_action.KeyCode = static_cast<std::int16_t>(KeyCodeOfName(text.trimmed()));
    emit ActionEdited(m_action);
    // A key the phone cannot send is named as such.
    if (KeyToUsage(m_action.KeyCode) == "00"_L1)
        SetMessage(LanguageText(EditorText::KeyNotSupported), true);
    else
        SetMessage(QString(), false);
}

void ActionEditor::ShowMousePanel(bool mouse)
{
    // The panels take the height of the one shown, so that no empty band lies
    // between the mouse options and the comment.
    QWidget *shown = mouse ? m_mousePanel : m_keyboardPanel;
    for (QWidget *panel : {m_keyboardPanel, m_mousePanel})
        panel->setSizePolicy(QSizePolicy::Preferred, panel == shown ? QSizePolicy::Preferred : QSizePolicy::Ignored);
    m_panels->setCurrentWidget(shown);
    m_panels->updateGeometry();
}

bool ActionEditor::IsMousePanelShown() const
{
    return m_panels->currentWidget() == m_mousePanel;
}

void ActionEditor::ShowMovementPicture(int mouseAction)
{
    const bool movement = mouseAction >= MouseActions::MoveLeft && mouseAction <= MouseActions::MoveDownLeft;
    m_shownMovement = movement ? mouseAction : -1;
    if (movement) {
        m_movementPicture->setPixmap(MovementArrowIcon(mouseAction, palette())
                                         .pixmap(QSize(MovementPictureExtent, MovementPictureExtent) * 2 / 3,
                                                 devicePixelRatioF()));
    } else {
        m_movementPicture->clear();
    }
}

void ActionEditor::ApplyLanguage()
{
    m_device->setItemText(0, LanguageText(EditorText::DeviceKeyboard));
    m_device->setItemText(1, LanguageText(EditorText::DeviceMouse));
    m_deviceLabel->setText(LanguageText(EditorText::LabelDevice));
    m_commentLabel->setText(LanguageText(EditorText::LabelComment));
    m_specialFrame->setTitle(LanguageText(EditorText::FrameSpecialKeys));
    m_snapshot->setText(LanguageText(EditorText::ButtonSnapshot));
    m_leftLabel->setText(LanguageText(EditorText::LabelLeft));
    m_rightLabel->setText(LanguageText(EditorText::LabelRight));
    m_rowLabels[0]->setText(LanguageText(KeymapText::LabelShift));
    m_rowLabels[1]->setText(LanguageText(KeymapText::LabelCtrl));
    m_rowLabels[2]->setText(LanguageText(KeymapText::LabelAlt));
    m_rowLabels[3]->setText(LanguageText(KeymapText::LabelWin));
    m_movementLabel->setText(LanguageText(EditorText::LabelMovement));
    m_mouseOptions->button(MouseActions::ButtonLeft)->setText(LanguageText(EditorText::MouseClickLeft));
    m_mouseOptions->button(MouseActions::ButtonRight)->setText(LanguageText(EditorText::MouseClickRight));

    // Names for screen readers of the controls that show no words: the boxes say
    // their row and side, the arrows their movement, the list's text field the
    // list's title, and the lists that drop down their labels.
    for (int i = 0; i < ModifierBoxCount; ++i) {
        const QString row = WithoutAccessKey(m_rowLabels[static_cast<std::size_t>(i % 4)]->text());
        ModifierBox(i)->setAccessibleName(
            LanguageText(i < 4 ? EditorText::NameLeftModifier : EditorText::NameRightModifier).replace("%m"_L1, row));
    }
    for (const CompassCell &cell : Compass)
        m_mouseOptions->button(cell.MouseAction)
            ->setAccessibleName(LanguageText(MovementNames[static_cast<std::size_t>(cell.MouseAction - 2)]));
    m_specialKeys->lineEdit()->setAccessibleName(WithoutAccessKey(m_specialFrame->title()));
    m_specialKeys->view()->setAccessibleName(WithoutAccessKey(m_specialFrame->title()));
    m_device->view()->setAccessibleName(WithoutAccessKey(m_deviceLabel->text()));

    const QString current = m_specialKeys->currentText();
    const QSignalBlocker blocker(m_specialKeys);
    m_specialKeys->clear();
    m_specialKeys->addItems(SpecialKeyNames());
    m_specialKeys->setCurrentText(current);
}

void ActionEditor::KeepWidthForTitles(const QStringList &titles)
{
    KeepWidthForTexts(
        *this, titles, [this](const QString &text) { setTitle(text); }, title());
}

void ActionEditor::SetMessage(const QString &text, bool isError)
{
    QPalette palette = m_message->palette();
    palette.setColor(QPalette::WindowText,
                     isError ? QColor(200, 30, 30) : this->palette().color(QPalette::WindowText));
    m_message->setPalette(palette);
    m_message->setText(text);
}

bool ActionEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_comment && event->type() == QEvent::ShortcutOverride) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo))
            return true;
    }
    return QGroupBox::eventFilter(watched, event);
}

void ActionEditor::changeEvent(QEvent *event)
{
    QGroupBox::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        UpdateArrowIcons();
        ShowMovementPicture(m_shownMovement);
    }
}

void ActionEditor::UpdateArrowIcons()
{
    for (const CompassCell &cell : Compass)
        m_mouseOptions->button(cell.MouseAction)->setIcon(MovementArrowIcon(cell.MouseAction, palette()));
}
