// The window with its looks and recipes, and a recipe to give it.
#pragma once

#include <QFile>

#include "application_fixture.h"
#include "qt/companions.h"
#include "qt/preset_strip.h"
#include "qt/recipe_commands.h"
#include "recipe/recipe.h"

namespace skarnel {

class CompanionsTest : public ApplicationTest {
  protected:
    PresetStrip& strip() { return app->companions().presets(); }
    RecipeCommands& recipes() { return app->companions().recipes(); }

    SettingNumbers settings() {
        SettingNumbers numbers{};
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            numbers[i] = app->model().number(kReflectionSettings[i].key);
        }
        return numbers;
    }

    void choose(int row) {
        QListWidget& list = strip().list();
        list.setFocus();
        list.setCurrentRow(row);
        QTest::keyClick(&list, Qt::Key_Return);
        settle();
    }

    QString recipeFile(const Recipe& recipe, const QString& name = QStringLiteral("a.skarnel")) {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::fromStdString(*serializeRecipe(recipe)));
        return path;
    }

    static Recipe someRecipe() {
        Recipe recipe = Recipe::defaults();
        recipe.settings = {12, 45, 3, -5, 9, 180, 50};
        recipe.applyBackgroundColor = true;
        recipe.background = {0x20, 0x40, 0x60, 0xFF};
        return recipe;
    }
};

}  // namespace skarnel
