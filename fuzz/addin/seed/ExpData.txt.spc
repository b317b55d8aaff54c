object ExpertData: TExpData
  ActiveExperts_ = <
    item
      ExpertName = 'EditorManager'
      Active = True
    end>
  MenuData_ = <
    item
      ItemID = 'MoveBlockLeftOneItem'
      HaveLineBefore = True
      ShortCutText = 'Ctrl+,'
    end
    item
      ItemID = 'MoveBlockLeftTwoItem'
      HaveLineBefore = False
      ShortCutText = 'Ctrl+Shift+,'
    end
    item
      ItemID = 'MoveBlockRightOneItem'
      HaveLineBefore = False
      ShortCutText = 'Ctrl+.'
    end
    item
      ItemID = 'MoveBlockRightTwoItem'
      HaveLineBefore = False
      ShortCutText = 'Ctrl+Shift+.'
    end
    item
      ItemID = 'SortLinesItem'
      HaveLineBefore = False
      ShortCutText = 'Ctrl+;'
    end
    item
      ItemID = 'AboutFormItem'
      HaveLineBefore = False
      ShortCutText = ''
    end>
  CustomData_ = <
    item
      AObjectID = 'ExpManagerData'
      NestedObject.ExpertVersion = '1.0'
      NestedObject.AutoSaveSettings = True
      NestedObject.MainMenuSearchItem = 'Tools'
      NestedObject.InsertMenuBeforeItem = True
      NestedObject.MenuHaveLineBefore = False
      NestedObject.MenuHaveLineAfter = False
      NestedObject.ErrorLogAllowed = True
      NestedObject.MaxLogSize = 50
      NestedObject.EditorFormData.AutoSaveSetting = True
      NestedObject.EditorFormData.SaveSettingShortCut = 'Ctrl+S'
    end
    item
      AObjectID = 'EditorManagerData'
      NestedObject.MoveCursorTopLeft = False
      NestedObject.SafeStringMoving = True
    end>
end
