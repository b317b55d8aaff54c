object InfoFrame: TInfoFrame
  Left = 0
  Top = 0
  Width = 443
  Height = 70
  TabOrder = 0
  object Bevel: TBevel
    Left = 0
    Top = 0
    Width = 443
    Height = 2
    Align = alTop
    Shape = bsTopLine
  end
  object TitleLabel: TLabel
    Left = 8
    Top = 12
    Width = 56
    Height = 13
    Caption = 'Сведения'
    Font.Charset = RUSSIAN_CHARSET
    Font.Color = clNavy
    Font.Height = -11
    Font.Name = 'MS Sans Serif'
    Font.Style = [fsBold]
    ParentFont = False
  end
  object SizeLabel: TLabel
    Left = 8
    Top = 36
    Width = 47
    Height = 13
    Caption = 'Размер: 0'
  end
end
