// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QList>
#include <QString>

class QListWidget;
class QTreeWidget;

// A ready-made keymap in a "templates" folder and the name users see for it.
struct ProfileTemplate
{
    QString Path;
    QString Title;
};

// The keymaps in the "templates" folders of the program's data folders, in the
// order of their titles. A file name found in several folders is taken from
// the first, so a copy beside the program wins over an installed one.
QList<ProfileTemplate> ProfileTemplates();

// The name of a template: the bundled ones are named in the active language,
// since a keymap file has no place for a title in more than one language; any
// other is called by its file name.
QString TemplateTitle(const QString &path);

// The chooser of File > New from template: the templates by name and, for the
// one selected, each of the 22 keys with its action (as the key's tool tip
// reads) and its comment, so the user sees what it does before opening it.
class TemplateChooser : public QDialog
{
    Q_OBJECT

public:
    explicit TemplateChooser(QWidget *parent = nullptr);

    QListWidget *TemplateList() const { return m_list; }
    QTreeWidget *KeyList() const { return m_keys; }
    // The keymap of the selected template; "" when there is none.
    QString ChosenPath() const;

private:
    void ShowTemplate(int row);

    QList<ProfileTemplate> m_templates;
    QListWidget *m_list = nullptr;
    QTreeWidget *m_keys = nullptr;
};
