// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "keymap/keymap.h"

#include <QGroupBox>

#include <array>

class QAbstractButton;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;

// The editor of one key's action: device list, keyboard panel (modifier boxes,
// special-key list, Snapshot) and mouse panel (ten options with the movement
// arrows), comment and message line. It shows a KeyAction and hands each edit
// of it back whole; the main window stores it.
class ActionEditor : public QGroupBox
{
    Q_OBJECT

public:
    static constexpr int ModifierBoxCount = 8; // left Shift, Ctrl, Alt, Win; then the right ones
    static constexpr int MouseOptionCount = 10;

    explicit ActionEditor(QWidget *parent = nullptr);

    QComboBox *DeviceList() const { return m_device; }
    QCheckBox *ModifierBox(int index) const { return m_modifiers.at(static_cast<std::size_t>(index)); }
    QComboBox *SpecialKeyList() const { return m_specialKeys; }
    QPushButton *SnapshotButton() const { return m_snapshot; }
    QAbstractButton *MouseOption(int index) const;
    QLineEdit *CommentBox() const { return m_comment; }
    QLabel *MessageLabel() const { return m_message; }

    // Shows the action in every control and clears the message line. Showing
    // is no edit: nothing is reported.
    void ShowAction(const KeyAction &action);

    // Brings the keyboard (false) or mouse (true) panel to the front.
    void ShowMousePanel(bool mouse);
    bool IsMousePanelShown() const;
    // Shows the big arrow of a movement (mouse action 2..9), none otherwise.
    void ShowMovementPicture(int mouseAction);
    int ShownMovementPicture() const { return m_shownMovement; }

    // Texts from the active language file.
    void ApplyLanguage();
    // A message line, as an error (red) or a prompt.
    void SetMessage(const QString &text, bool isError);

signals:
    // The action shown, as the user has just changed it.
    void ActionEdited(const KeyAction &action);

protected:
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void ModifierBoxClicked(int index, bool checked);
    void SpecialKeyChosen(const QString &text);
    void UpdateArrowIcons();

    KeyAction m_action;

    QComboBox *m_device = nullptr;
    QStackedWidget *m_panels = nullptr;
    QWidget *m_keyboardPanel = nullptr;
    QWidget *m_mousePanel = nullptr;
    std::array<QCheckBox *, ModifierBoxCount> m_modifiers{};
    QLabel *m_deviceLabel = nullptr;
    QLabel *m_leftLabel = nullptr;
    QLabel *m_rightLabel = nullptr;
    std::array<QLabel *, 4> m_rowLabels{};
    QGroupBox *m_specialFrame = nullptr;
    QComboBox *m_specialKeys = nullptr;
    QPushButton *m_snapshot = nullptr;
    QButtonGroup *m_mouseOptions = nullptr;
    QLabel *m_movementLabel = nullptr;
    QLabel *m_movementPicture = nullptr;
    int m_shownMovement = -1;
    QLabel *m_commentLabel = nullptr;
    QLineEdit *m_comment = nullptr;
    QLabel *m_message = nullptr;
};
