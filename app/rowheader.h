// The row header of the frame table, never seen: rows of one height, whose number is set once per round.
#pragma once

#include <QHeaderView>

class RowHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit RowHeader(QWidget *parent) : QHeaderView(Qt::Vertical, parent)
    {
        setSectionResizeMode(Fixed);
        hide();
    }

    // All rows, hidden ones included: those keep the height with which they were hidden.
    void setHeight(int pixels)
    {
        setDefaultSectionSize(pixels);
        for (int row = 0; sectionsHidden() && row < count(); ++row)
            if (isSectionHidden(row))
                resizeSection(row, pixels);
    }
    // As many sections as the model has rows; those that stay keep their hidden state.
    void followRowCount() { initializeSections(); }
};
